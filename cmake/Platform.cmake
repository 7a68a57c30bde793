# What the programs cannot run on, said before anything else is looked for.
# Sizes of files, folders and tensors are 64-bit numbers that are used as sizes in memory.
if(CMAKE_SIZEOF_VOID_P LESS 8)
    math(EXPR bits "8 * ${CMAKE_SIZEOF_VOID_P}")
    message(FATAL_ERROR "Quillmere needs a 64-bit processor; this compiler makes programs of ${bits} bits.")
endif()
