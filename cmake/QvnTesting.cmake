# A GoogleTest program that uses qvn::testing::TestVehicle:
#   qvn_add_vehicle_test(NAME name SOURCES file... [LIBS target...] [TIMEOUT seconds])
# Every test case becomes a test of its own for ctest, in a process of its own: the vehicle client lives as long as its
# process. One that takes longer than TIMEOUT, 60 s by default, fails; shortly before that the TestVehicle tells which of
# the application's callbacks is running. Call enable_testing() before.
include(GoogleTest)

function(qvn_add_vehicle_test)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "NAME;TIMEOUT" "SOURCES;LIBS")
    if(NOT arg_NAME OR NOT arg_SOURCES OR arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "Expected qvn_add_vehicle_test(NAME name SOURCES file... [LIBS target...] [TIMEOUT seconds])")
    endif()
    if(NOT DEFINED arg_TIMEOUT)
        set(arg_TIMEOUT 60)
    elseif(NOT arg_TIMEOUT MATCHES "^[1-9][0-9]*$")
        message(FATAL_ERROR "TIMEOUT is '${arg_TIMEOUT}'. Expected a number of seconds")
    endif()
    find_package(GTest REQUIRED)
    add_executable(${arg_NAME} ${arg_SOURCES})
    target_link_libraries(${arg_NAME} PRIVATE ${arg_LIBS} qvn::vehicleclient_testing GTest::gtest_main)
    gtest_discover_tests(${arg_NAME} DISCOVERY_TIMEOUT 60
        PROPERTIES TIMEOUT ${arg_TIMEOUT} ENVIRONMENT QVN_TEST_TIMEOUT=${arg_TIMEOUT})
endfunction()
