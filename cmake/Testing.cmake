find_package(GTest REQUIRED)
include(GoogleTest)

# quillmere_add_test(NAME SOURCES file... [LIBRARIES lib...] [WHOLE])
# One executable per subject. Each of its cases is a ctest test of its own, unless WHOLE is given: then
# the executable is one ctest test, named NAME.
function(quillmere_add_test name)
    cmake_parse_arguments(arg "WHOLE" "" "SOURCES;LIBRARIES" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/Tests ${PROJECT_SOURCE_DIR}/Sources)
    target_compile_definitions(${name} PRIVATE QUILLMERE_TESTS_DIR="${PROJECT_SOURCE_DIR}/Tests")
    target_link_libraries(${name} PRIVATE QuillmereCore QuillmereSettings GTest::gtest_main GTest::gmock ${arg_LIBRARIES})
    if(arg_WHOLE)
        add_test(NAME ${name} COMMAND ${name})
    else()
        gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60)
    endif()
endfunction()
