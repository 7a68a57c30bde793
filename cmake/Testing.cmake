find_package(GTest REQUIRED)
include(GoogleTest)

# quillmere_add_test(NAME SOURCES file... [LIBRARIES lib...] [ENVIRONMENT variable=value...] [WHOLE])
# One executable per subject. Each of its cases is a ctest test of its own, unless WHOLE is given: then
# the executable is one ctest test, named NAME. Without an environment of its own a test sees no graphics
# processor: its results must not depend on the machine.
function(quillmere_add_test name)
    cmake_parse_arguments(arg "WHOLE" "" "SOURCES;LIBRARIES;ENVIRONMENT" ${ARGN})
    if(NOT arg_ENVIRONMENT)
        set(arg_ENVIRONMENT VK_ICD_FILENAMES=none)
    endif()
    add_executable(${name} ${arg_SOURCES})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/Tests ${PROJECT_SOURCE_DIR}/Sources)
    target_compile_definitions(${name} PRIVATE QUILLMERE_TESTS_DIR="${PROJECT_SOURCE_DIR}/Tests")
    target_link_libraries(${name} PRIVATE QuillmereCore QuillmereSettings GTest::gtest_main GTest::gmock ${arg_LIBRARIES})
    if(arg_WHOLE)
        add_test(NAME ${name} COMMAND ${name})
        set_tests_properties(${name} PROPERTIES ENVIRONMENT "${arg_ENVIRONMENT}")
    else()
        string(REPLACE ";" "\\;" environment "${arg_ENVIRONMENT}")  # one value of the list of properties
        gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES ENVIRONMENT "${environment}")
    endif()
endfunction()
