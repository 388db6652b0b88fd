if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    set(can_socket_test CanSocket_test.cpp)
endif()

qvn_add_test(NAME tools_test
    SOURCES AnswerRules_test.cpp Answers_test.cpp CanDecoder_test.cpp CandumpReader_test.cpp ${can_socket_test} Completion_test.cpp
            Dbc_test.cpp Health_test.cpp MessageSupervisor_test.cpp Output_test.cpp Panel_test.cpp
            PhysicalValue_test.cpp PropertyNames_test.cpp SetGoal_test.cpp SignalNotes_test.cpp Simulation_test.cpp
            TraceCommands_test.cpp TraceFile_test.cpp TraceReader_test.cpp WatchView_test.cpp
    LIBS qvn_can_service_sim qvn_vehiclectl
    LABELS tools)

# The modules of the panel's page that need no browser, and the syntax of all.
find_program(QVN_NODE NAMES node nodejs)
if(QVN_NODE)
    set(page_folder "${PROJECT_SOURCE_DIR}/tools/can-service-sim/panel/page")
    add_test(NAME PanelPage.Modules COMMAND "${QVN_NODE}" --test connection.test.js layout.test.js model.test.js
        WORKING_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}/page")
    add_test(NAME PanelPage.Syntax
        COMMAND sh -c "for file in '${page_folder}'/*.js; do '${QVN_NODE}' --check \"$file\" || exit 1; done")
    set_property(TEST PanelPage.Syntax PROPERTY LABELS tools)
else()
    add_test(NAME PanelPage.Modules COMMAND sh -c "echo 'there is no node here'; exit 77")
    set_property(TEST PanelPage.Modules PROPERTY SKIP_RETURN_CODE 77)
endif()
set_property(TEST PanelPage.Modules PROPERTY LABELS tools)

# What scripts/generate makes must be as it would make it now.
set(generator "${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:property-ids>")
add_test(NAME PropertyIds.HeaderIsCurrent
    COMMAND sh -c "${generator} | diff '${PROJECT_SOURCE_DIR}/include/vehicle/PropertyIds.h' -")
add_test(NAME PropertyIds.ListIsCurrent
    COMMAND sh -c "${generator} --markdown | diff '${PROJECT_SOURCE_DIR}/docs/properties.md' -")
set_property(TEST PropertyIds.HeaderIsCurrent PropertyIds.ListIsCurrent PROPERTY LABELS tools)

# Programs that other tests run, on whatever bus.
add_executable(ending_application e2e/EndingApplication.cpp)
target_compile_features(ending_application PRIVATE cxx_std_17)
target_link_libraries(ending_application PRIVATE qvn::vehicleclient qvn::common_base Threads::Threads qvn_warnings)

if(QVN_PLATFORM STREQUAL "host")
    qvn_add_test(NAME test_vehicle_test
        SOURCES TestVehicle_test.cpp
        LIBS qvn::vehicleclient_testing qvn_wire
        LABELS testing)
    include(e2e/e2e.cmake)
endif()
