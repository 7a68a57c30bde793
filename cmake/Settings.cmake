# Compiler settings shared by every target, as the interface target QuillmereSettings.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

add_library(QuillmereSettings INTERFACE)
# A seed must reproduce its result: no contraction into FMA where the source does not ask for it, and
# never -ffast-math (NaN is tested for).
target_compile_options(QuillmereSettings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
    -ffp-contract=off
    $<$<BOOL:${QUILLMERE_WARNINGS_AS_ERRORS}>:-Werror>)

# Clang refuses code that touches guarded data without its lock (Util/ThreadSafety.h).
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_compile_options(QuillmereSettings INTERFACE -Wthread-safety)
endif()

# GCC 12 sees overlapping copies in "text" + std::string where there are none (its bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(QuillmereSettings INTERFACE -Wno-restrict)
endif()

# With a sanitizer's checks in between, GCC loses sight of what an optional holds and takes it for uninitialised.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT QUILLMERE_SANITIZE STREQUAL "")
    target_compile_options(QuillmereSettings INTERFACE -Wno-maybe-uninitialized)
endif()

if(QUILLMERE_SANITIZE STREQUAL "address")
    set(sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    # Clang counts the branches taken as well, for the programs in Tests/Fuzz: one build serves both.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        list(APPEND sanitizers -fsanitize=fuzzer-no-link)
    endif()
elseif(QUILLMERE_SANITIZE STREQUAL "thread")
    set(sanitizers -fsanitize=thread -fno-omit-frame-pointer)
elseif(NOT QUILLMERE_SANITIZE STREQUAL "")
    message(FATAL_ERROR "QUILLMERE_SANITIZE must be empty, address or thread")
endif()
target_compile_options(QuillmereSettings INTERFACE ${sanitizers})
# GCC and Clang do not say in the same way that they look at addresses.
if(QUILLMERE_SANITIZE STREQUAL "address")
    target_compile_definitions(QuillmereSettings INTERFACE QUILLMERE_ADDRESS_SANITIZER)
endif()
target_link_options(QuillmereSettings INTERFACE ${sanitizers})

# quillmere_vector_code(file...)
# Files with nothing but vector code: full optimisation even in builds made for debugging. Under the sanitizers
# the checks of every unrolled load would take minutes to compile: less optimisation, addresses looked at by a call
# each, and of undefined behaviour what numbers can do; pointers are the address sanitizer's anyway.
function(quillmere_vector_code)
    set(options -O3)
    # The default tuning spills addresses into vector registers in large butterflies. Tuning changes neither the
    # instruction sets nor the results.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
        list(APPEND options -mtune=icelake-server)
    endif()
    if(QUILLMERE_SANITIZE STREQUAL "address")
        set(options -O1 -fno-sanitize=undefined
            -fsanitize=signed-integer-overflow,shift,integer-divide-by-zero,float-cast-overflow,bounds)
        if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
            list(APPEND options -fno-sanitize=fuzzer-no-link -mllvm -asan-instrumentation-with-call-threshold=0)
        else()
            list(APPEND options --param=asan-instrumentation-with-call-threshold=0)
        endif()
    elseif(QUILLMERE_SANITIZE STREQUAL "thread")
        set(options -O1)
    endif()
    # Highway marks what it has for NEON as code for processors with AES, which compilers put into no function without
    # that mark, such as the constructors that they make themselves. Nothing here uses AES: the programs run without it.
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "aarch64|arm64" AND NOT CMAKE_CXX_FLAGS MATCHES "-m(arch|cpu)=")
        list(APPEND options -march=armv8-a+crypto)
    endif()
    if(QUILLMERE_ONE_INSTRUCTION_SET)
        list(APPEND options -march=native -DHWY_COMPILE_ONLY_STATIC)
    endif()
    quillmere_unharden(options)
    set_source_files_properties(${ARGN} TARGET_DIRECTORY QuillmereCore PROPERTIES COMPILE_OPTIONS "${options}")
endfunction()
