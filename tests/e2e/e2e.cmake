qvn_add_test(NAME e2e_test
    SOURCES e2e/Browser.cpp e2e/Desk.cpp e2e/Process.cpp e2e/RawSocket.cpp e2e/BadInput_test.cpp e2e/CanBus_test.cpp
            e2e/Faults_test.cpp e2e/HostilePeer_test.cpp e2e/Output_test.cpp e2e/Panel_test.cpp e2e/PanelPage_test.cpp
            e2e/ProcessEnd_test.cpp e2e/Prompt_test.cpp e2e/Security_test.cpp e2e/Simulator_test.cpp
            e2e/Vehiclectl_test.cpp
    LIBS qvn_can_service_sim nlohmann_json::nlohmann_json PkgConfig::httplib
    LABELS e2e
    TOGETHER PanelInBrowser)
set(bin_dir "$<TARGET_FILE_DIR:vehiclectl>")
if(CMAKE_CROSSCOMPILING)
    # The tests start programs by their names: each name is a script there that runs the emulator.
    set(bin_dir "${CMAKE_CURRENT_BINARY_DIR}/emulated")
    foreach(program IN ITEMS can-service-sim ending_application vehiclectl)
        file(GENERATE OUTPUT "${bin_dir}/${program}"
            CONTENT "#!/bin/sh\nexec ${CMAKE_CROSSCOMPILING_EMULATOR} '$<TARGET_FILE:${program}>' \"$@\"\n"
            FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
    endforeach()
endif()
target_compile_definitions(e2e_test PRIVATE
    QVN_BIN_DIR="${bin_dir}"
    QVN_COMPLETION_DIR="${PROJECT_SOURCE_DIR}/tools/completion"
    QVN_MAN_DIR="${PROJECT_SOURCE_DIR}/docs/man"
    QVN_PARKING_TRACE="${PROJECT_SOURCE_DIR}/share/traces/parking.trace"
    QVN_SHARE_DIR="${PROJECT_SOURCE_DIR}/share")
# Takes the pictures for the documents.
add_executable(panel_pictures EXCLUDE_FROM_ALL e2e/Browser.cpp e2e/Desk.cpp e2e/PanelPictures.cpp e2e/Process.cpp)
target_compile_features(panel_pictures PRIVATE cxx_std_17)
target_compile_definitions(panel_pictures PRIVATE
    QVN_BIN_DIR="${bin_dir}" QVN_PARKING_TRACE="${PROJECT_SOURCE_DIR}/share/traces/parking.trace")
target_include_directories(panel_pictures PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(panel_pictures PRIVATE GTest::gtest nlohmann_json::nlohmann_json Threads::Threads qvn_warnings)
add_dependencies(panel_pictures can-service-sim vehiclectl)
add_dependencies(e2e_test can-service-sim ending_application vehiclectl)
