qvn_add_test(NAME tools_test
    SOURCES AnswerRules_test.cpp MessageSupervisor_test.cpp PhysicalValue_test.cpp PropertyNames_test.cpp
            TraceReader_test.cpp
    LIBS qvn_can_service_sim
    LABELS tools)

if(QVN_PLATFORM STREQUAL "host")
    include(e2e/e2e.cmake)
endif()
