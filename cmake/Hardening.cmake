# What makes a mistake in the programs end them instead of letting somebody in: checks of buffers whose size the
# compiler knows, of indices into containers, and of the stack; code at addresses that nobody can guess; tables of
# functions that are read-only before the first of ours runs. Results stay the same bit for bit.
# Tests/Reliability/HardeningTest.cpp reads what the programs have got of it.
#
# Not in debug builds, where the first of these lacks the optimiser, and not under the sanitizers, which see more.
# -fcf-protection is not among them: it takes effect only where everything that is linked was compiled with it, and
# Debian's start-up files are not.

include(CheckCXXCompilerFlag)

option(QUILLMERE_HARDENING "Check optimised programs for mistakes that let attackers in, while they run" ON)
set(QUILLMERE_IS_HARDENED OFF)
# What becomes a part of the Python module, or of a shared library (-D CMAKE_POSITION_INDEPENDENT_CODE=ON), must be as
# free of its place as that is; programs need less.
if(QUILLMERE_BUILD_PYTHON)
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)
endif()
set(QUILLMERE_PLACE_FREE -fPIE)
if(CMAKE_POSITION_INDEPENDENT_CODE)
    set(QUILLMERE_PLACE_FREE -fPIC -fno-semantic-interposition)
endif()
if(QUILLMERE_HARDENING AND QUILLMERE_SANITIZE STREQUAL "" AND CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo)$")
    set(QUILLMERE_IS_HARDENED ON)
endif()
check_cxx_compiler_flag(-fstack-clash-protection QUILLMERE_HAS_STACK_CLASH_PROTECTION)

# quillmere_harden(target): a program, or a library that becomes a part of one.
function(quillmere_harden target)
    # Libraries are the system's. Qt's project setup would have installed programs look beside themselves, too, and
    # those in the build folder wherever they are started.
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "")
    if(NOT QUILLMERE_IS_HARDENED)
        return()
    endif()
    # Some distributions define a level of their own; a second definition would be a warning.
    target_compile_options(${target} PRIVATE
        -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -D_GLIBCXX_ASSERTIONS ${QUILLMERE_PLACE_FREE} -fstack-protector-strong)
    if(QUILLMERE_HAS_STACK_CLASH_PROTECTION)
        target_compile_options(${target} PRIVATE -fstack-clash-protection)
    endif()
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
        target_link_options(${target} PRIVATE -pie LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
    endif()
endfunction()

# quillmere_unharden(variable) appends to a list of options what takes the checks away again. For vector code, which
# sees no byte that came from outside before others have checked it, but would check its stack before every tile of a
# product: with that, the fastest of eight decodings of a single image took 1.97 ms instead of 1.68 ms.
function(quillmere_unharden variable)
    if(NOT QUILLMERE_IS_HARDENED)
        return()
    endif()
    list(APPEND ${variable} -U_FORTIFY_SOURCE -U_GLIBCXX_ASSERTIONS -fno-stack-protector)
    if(QUILLMERE_HAS_STACK_CLASH_PROTECTION)
        list(APPEND ${variable} -fno-stack-clash-protection)
    endif()
    set(${variable} ${${variable}} PARENT_SCOPE)
endfunction()
