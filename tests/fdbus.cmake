qvn_add_test(NAME Fdbus_test
    SOURCES Fdbus_test.cpp
    LIBS qvn::common_base)
