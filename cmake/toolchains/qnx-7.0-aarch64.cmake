# QNX Neutrino 7 on 64-bit ARM. First source the SDP's environment script, which sets QNX_HOST and QNX_TARGET.
if(NOT DEFINED ENV{QNX_HOST} OR NOT DEFINED ENV{QNX_TARGET})
    message(FATAL_ERROR "QNX_HOST and QNX_TARGET are not set. Source qnxsdp-env.sh of the SDP first")
endif()
set(triple aarch64-unknown-nto-qnx7.0.0)
set(CMAKE_SYSTEM_NAME QNX)
set(CMAKE_SYSTEM_VERSION 7.0.0)
set(CMAKE_SYSTEM_PROCESSOR aarch64le)
set(CMAKE_CXX_COMPILER "$ENV{QNX_HOST}/usr/bin/${triple}-g++")
set(CMAKE_C_COMPILER "$ENV{QNX_HOST}/usr/bin/${triple}-gcc")
set(CMAKE_SYSROOT "$ENV{QNX_TARGET}")
set(CMAKE_FIND_ROOT_PATH "$ENV{QNX_TARGET}" "$ENV{QNX_TARGET}/aarch64le")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)  # protoc is the host's
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY BOTH)   # the SDK and protobuf may lie elsewhere
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
