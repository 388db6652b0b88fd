qvn_add_test(NAME host_runtime_test SOURCES HostRuntime_test.cpp LIBS qvn_host_runtime LABELS host)
qvn_add_test(NAME lgklog_test SOURCES Lgklog_test.cpp LIBS qvn::lgklog LABELS host)
qvn_add_test(NAME psis_test SOURCES Psis_test.cpp LIBS qvn::psis_client LABELS host)
qvn_add_test(NAME gpioport_test SOURCES Gpioport_test.cpp LIBS qvn::gpioport_client LABELS host)
# A program of its own, like out_of_memory_test: its operator new can be told to fail.
qvn_add_test(NAME gpioport_out_of_memory_test
    SOURCES GpioportOutOfMemory_test.cpp
    LIBS qvn::gpioport_client
    LABELS host)
