find_package(GTest REQUIRED)
include(GoogleTest)
# What reads the files that the product writes.
pkg_check_modules(LIBXML REQUIRED IMPORTED_TARGET libxml-2.0)
pkg_check_modules(LIBPNG REQUIRED IMPORTED_TARGET libpng)

# quillmere_gpu_environment(variable manifest...) sets the environment of a test that sees these drivers of graphics
# processors alone, whatever the machine has; compiled shaders are kept in the build folder.
function(quillmere_gpu_environment variable)
    list(JOIN ARGN ":" manifests)
    set(environment
        VK_ICD_FILENAMES=${manifests}
        XDG_CACHE_HOME=${PROJECT_BINARY_DIR}/shader-cache
        MESA_SHADER_CACHE_DIR=${PROJECT_BINARY_DIR}/shader-cache
        LP_NUM_THREADS=1)
    # Drivers forget memory, and Vulkan's loader unloads them: what is forgotten would be nobody's. Held by the program
    # to its end, a driver is known to the leak sanitizer.
    if(QUILLMERE_SANITIZE STREQUAL "address")
        foreach(manifest IN LISTS ARGN)
            file(READ ${manifest} json)
            string(JSON library GET "${json}" ICD library_path)
            list(APPEND libraries ${library})
        endforeach()
        list(JOIN libraries ":" libraries)
        list(APPEND environment LD_PRELOAD=${libraries})
    endif()
    set(${variable} ${environment} PARENT_SCOPE)
endfunction()

# Tests that need a graphics processor have Mesa's software driver.
set(QUILLMERE_GPU_TESTS OFF)
if(QUILLMERE_VULKAN)
    file(GLOB software_driver /usr/share/vulkan/icd.d/lvp_icd*.json)
    if(software_driver)
        set(QUILLMERE_GPU_TESTS ON)
    else()
        message(STATUS "No tests of graphics processors: Mesa's software driver is missing (package mesa-vulkan-drivers)")
    endif()
endif()
if(QUILLMERE_GPU_TESTS)
    list(GET software_driver 0 QUILLMERE_SOFTWARE_DRIVER)
    quillmere_gpu_environment(QUILLMERE_SOFTWARE_GPU ${QUILLMERE_SOFTWARE_DRIVER})
    # The same behind a layer that fails when a test says so; such a test links FaultyDriver.
    set(QUILLMERE_FAULTY_GPU_FOLDER ${PROJECT_BINARY_DIR}/faulty-driver)
    set(QUILLMERE_FAULTY_GPU ${QUILLMERE_SOFTWARE_GPU}
        VK_LAYER_PATH=${QUILLMERE_FAULTY_GPU_FOLDER}
        VK_INSTANCE_LAYERS=VK_LAYER_QUILLMERE_faulty_driver)
endif()

# What only tests compile is optimised lightly: heavily, their many assertions take half as long again to compile.
# The product in them is compiled as ever. Results are the same: nothing in the build may change arithmetic.
set(QUILLMERE_TEST_OPTIONS $<$<CONFIG:Release,RelWithDebInfo>:-O1>)

# Every test is labelled fast or slow: the fast ones are the inner loop (scripts/test.sh --fast), less than half a
# minute altogether. gpu and desktop say besides what a test needs: these are never fast. core are those of the core
# library, for the sanitizers.
# quillmere_test_labels(variable [SLOW] [gpu] [desktop]) sets the list of a test's labels.
function(quillmere_test_labels variable)
    set(labels ${ARGN})
    if(labels)
        list(REMOVE_ITEM labels SLOW)
        list(PREPEND labels slow)
    else()
        set(labels fast)
    endif()
    if(CMAKE_CURRENT_SOURCE_DIR MATCHES "/Tests/QuillmereCore")
        list(APPEND labels core)
    endif()
    set(${variable} ${labels} PARENT_SCOPE)
endfunction()

# Build what is so labelled; the third, what is both.
add_custom_target(fast-tests)
add_custom_target(core-tests)
add_custom_target(fast-core-tests)

# quillmere_add_test(NAME SOURCES file... [LIBRARIES lib...] [ENVIRONMENT variable=value...] [WHOLE] [SLOW])
# One executable per subject. Each of its cases is a ctest test of its own, unless WHOLE is given: then
# the executable is one ctest test, named NAME. Without an environment of its own, which is that of a graphics
# processor, a test sees none: its results must not depend on the machine.
function(quillmere_add_test name)
    cmake_parse_arguments(arg "WHOLE;SLOW" "" "SOURCES;LIBRARIES;ENVIRONMENT" ${ARGN})
    set(kind)
    if(arg_SLOW)
        list(APPEND kind SLOW)
    endif()
    if(arg_ENVIRONMENT)
        list(APPEND kind gpu)
    else()
        set(arg_ENVIRONMENT VK_ICD_FILENAMES=none)
    endif()
    list(APPEND arg_ENVIRONMENT LC_ALL=C.UTF-8 LANGUAGE=)  # the programs speak English
    quillmere_test_labels(labels ${kind})
    add_executable(${name} ${arg_SOURCES})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/Tests ${PROJECT_SOURCE_DIR}/Sources)
    target_compile_options(${name} PRIVATE ${QUILLMERE_TEST_OPTIONS})
    target_compile_definitions(${name} PRIVATE QUILLMERE_TESTS_DIR="${PROJECT_SOURCE_DIR}/Tests")
    target_link_libraries(${name} PRIVATE QuillmereCore QuillmereSettings GTest::gtest_main GTest::gmock ${arg_LIBRARIES})
    foreach(group fast core)
        if(group IN_LIST labels)
            add_dependencies(${group}-tests ${name})
        endif()
    endforeach()
    if("fast" IN_LIST labels AND "core" IN_LIST labels)
        add_dependencies(fast-core-tests ${name})
    endif()
    if(arg_WHOLE)
        add_test(NAME ${name} COMMAND ${name})
        set_tests_properties(${name} PROPERTIES ENVIRONMENT "${arg_ENVIRONMENT}" LABELS "${labels}")
    else()
        gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 TEST_LIST ${name}_cases)
        # Known only when ctest runs. As properties above, lists would be taken apart on their way there.
        set(script ${CMAKE_CURRENT_BINARY_DIR}/${name}_properties.cmake)
        file(WRITE ${script}
            "set_tests_properties(\${${name}_cases} PROPERTIES ENVIRONMENT \"${arg_ENVIRONMENT}\" LABELS \"${labels}\")\n")
        set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${script})
    endif()
endfunction()
