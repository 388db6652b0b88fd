qvn_add_test(NAME Fdbus_test
    SOURCES Fdbus_test.cpp
    LIBS qvn::common_base)
qvn_add_test(NAME fdbus_out_of_memory_test
    SOURCES FdbusOutOfMemory_test.cpp
    LIBS qvn::common_base
    LABELS host)
