if(QVN_SANITIZE)
    add_compile_options(-fsanitize=${QVN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${QVN_SANITIZE})
    if(QVN_SANITIZE MATCHES "undefined")
        # The check of virtual tables probes memory through a pipe: without a free descriptor, which some tests bring
        # about, it takes every object for a broken one.
        add_compile_options(-fno-sanitize=vptr)
    endif()
endif()
