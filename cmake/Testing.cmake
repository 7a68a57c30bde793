find_package(GTest REQUIRED)
include(GoogleTest)

# The environment of tests that need a graphics processor: Mesa's software driver, whatever the machine has, with
# compiled shaders kept in the build folder.
if(QUILLMERE_VULKAN)
    file(GLOB software_driver /usr/share/vulkan/icd.d/lvp_icd*.json)
    if(NOT software_driver)
        message(FATAL_ERROR "The Vulkan tests need Mesa's software driver (package mesa-vulkan-drivers)")
    endif()
    list(GET software_driver 0 software_driver)
    set(QUILLMERE_SOFTWARE_GPU
        VK_ICD_FILENAMES=${software_driver}
        XDG_CACHE_HOME=${PROJECT_BINARY_DIR}/shader-cache
        MESA_SHADER_CACHE_DIR=${PROJECT_BINARY_DIR}/shader-cache
        LP_NUM_THREADS=1)
    # The same behind a layer that fails when a test says so; such a test links FaultyDriver.
    set(QUILLMERE_FAULTY_GPU_FOLDER ${PROJECT_BINARY_DIR}/faulty-driver)
    set(QUILLMERE_FAULTY_GPU ${QUILLMERE_SOFTWARE_GPU}
        VK_LAYER_PATH=${QUILLMERE_FAULTY_GPU_FOLDER}
        VK_INSTANCE_LAYERS=VK_LAYER_QUILLMERE_faulty_driver)
endif()

# What only tests compile is optimised lightly: heavily, their many assertions take half as long again to compile.
# The product in them is compiled as ever. Results are the same: nothing in the build may change arithmetic.
set(QUILLMERE_TEST_OPTIONS $<$<CONFIG:Release,RelWithDebInfo>:-O1>)

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
    target_compile_options(${name} PRIVATE ${QUILLMERE_TEST_OPTIONS})
    target_compile_definitions(${name} PRIVATE QUILLMERE_TESTS_DIR="${PROJECT_SOURCE_DIR}/Tests")
    target_link_libraries(${name} PRIVATE QuillmereCore QuillmereSettings GTest::gtest_main GTest::gmock ${arg_LIBRARIES})
    if(arg_WHOLE)
        add_test(NAME ${name} COMMAND ${name})
        set_tests_properties(${name} PROPERTIES ENVIRONMENT "${arg_ENVIRONMENT}")
    else()
        gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 TEST_LIST ${name}_cases)
        # Known only when ctest runs. As a property above, a list would be taken apart on its way there.
        set(script ${CMAKE_CURRENT_BINARY_DIR}/${name}_environment.cmake)
        file(WRITE ${script}
            "set_tests_properties(\${${name}_cases} PROPERTIES ENVIRONMENT \"${arg_ENVIRONMENT}\")\n")
        set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${script})
    endif()
endfunction()
