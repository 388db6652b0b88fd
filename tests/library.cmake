# Data and conversions; these need no double and build against an SDK as well.
qvn_add_test(NAME tables_test
    SOURCES PropertyList_test.cpp Tables_test.cpp support/ExpectedTables.cpp
    LIBS qvn_tables canservice_schema
    LABELS library)
set_property(SOURCE support/ExpectedTables.cpp PROPERTY COMPILE_DEFINITIONS
    QVN_EXPECTED_TABLES="${CMAKE_CURRENT_SOURCE_DIR}/data/expected_tables.txt")
set_property(SOURCE PropertyList_test.cpp PROPERTY COMPILE_DEFINITIONS
    QVN_PROPERTY_LIST="${PROJECT_SOURCE_DIR}/docs/properties.md")
qvn_add_test(NAME schema_test SOURCES Schema_test.cpp LIBS canservice_schema LABELS library)
qvn_add_test(NAME mailbox_test SOURCES Mailbox_test.cpp LIBS qvn_internals LABELS library)
qvn_add_test(NAME value_encoding_test
    SOURCES ValueEncoding_test.cpp
    LIBS qvn_internals
    LABELS library)

if(QVN_PLATFORM STREQUAL "host")
    # The doubles define the platform's functions in the test program itself, where they win over the libraries'.
    add_library(qvn_test_support OBJECT
        support/CanServiceDouble.cpp
        support/ExpectedTables.cpp
        support/FakeClock.cpp
        support/FakeGpioport.cpp
        support/FakePsis.cpp
        support/LibraryTest.cpp
        support/LogRecorder.cpp)
    target_compile_features(qvn_test_support PUBLIC cxx_std_17)
    target_include_directories(qvn_test_support PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/include")
    target_link_libraries(qvn_test_support
        PUBLIC canservice_schema GTest::gtest qvn::common_base qvn::gpioport_client qvn::lgklog qvn::psis_client
        PRIVATE qvn_warnings)

    qvn_add_test(NAME library_test
        SOURCES BroadcastReception_test.cpp Concurrency_test.cpp FdbusServiceManager_test.cpp Log_test.cpp
                MessageStatus_test.cpp PropertyCache_test.cpp PropertySet_test.cpp ReverseLine_test.cpp
                SignalFeedback_test.cpp Subscription_test.cpp T21CanServiceFdbusClient_test.cpp
                T21CanSignalAdapter_test.cpp VehicleClientImpl_test.cpp
        LIBS qvn_test_support qvn_internals
        LABELS library)
    qvn_add_test(NAME allocations_test
        SOURCES Allocations_test.cpp
        LIBS qvn_test_support qvn_internals
        LABELS library)
    qvn_add_test(NAME out_of_memory_test
        SOURCES OutOfMemory_test.cpp
        LIBS qvn_test_support qvn_internals
        LABELS library)
    qvn_add_test(NAME vehicle_client_test
        SOURCES VehicleClientSet_test.cpp VehicleClient_test.cpp VehicleSession_test.cpp
        LIBS qvn_test_support qvn::vehicleclient
        LABELS library)
endif()
