if(QVN_SANITIZE)
    add_compile_options(-fsanitize=${QVN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${QVN_SANITIZE})
endif()
