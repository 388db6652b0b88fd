qvn_add_test(NAME e2e_test
    SOURCES e2e/Desk.cpp e2e/Process.cpp e2e/RawSocket.cpp e2e/BadInput_test.cpp e2e/Faults_test.cpp
            e2e/HostilePeer_test.cpp e2e/Output_test.cpp e2e/ProcessEnd_test.cpp e2e/Restart_test.cpp
            e2e/Security_test.cpp e2e/Simulator_test.cpp e2e/Vehiclectl_test.cpp
    LIBS nlohmann_json::nlohmann_json
    LABELS e2e)
target_compile_definitions(e2e_test PRIVATE
    QVN_BIN_DIR="$<TARGET_FILE_DIR:vehiclectl>"
    QVN_COMPLETION_DIR="${PROJECT_SOURCE_DIR}/tools/completion"
    QVN_MAN_DIR="${PROJECT_SOURCE_DIR}/docs/man"
    QVN_PARKING_TRACE="${PROJECT_SOURCE_DIR}/share/traces/parking.trace")
add_dependencies(e2e_test can-service-sim ending_application vehiclectl)
