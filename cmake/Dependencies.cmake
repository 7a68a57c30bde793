# Everything the product calls, as imported targets.

find_package(PkgConfig REQUIRED)
pkg_check_modules(FFMPEG REQUIRED IMPORTED_TARGET libavformat libavcodec libavutil)
pkg_check_modules(SOXR REQUIRED IMPORTED_TARGET soxr)
pkg_check_modules(HWY REQUIRED IMPORTED_TARGET libhwy)
find_package(ICU REQUIRED COMPONENTS i18n uc)
find_package(OpenSSL 3.0 REQUIRED COMPONENTS Crypto)
find_package(TBB REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(CLI11 REQUIRED)
find_package(Threads REQUIRED)

if(QUILLMERE_VULKAN)
    find_package(Vulkan 1.1 REQUIRED COMPONENTS glslc)
endif()

if(QUILLMERE_BUILD_APP)
    find_package(Qt6 6.4 REQUIRED COMPONENTS Core DBus Gui Qml Quick QuickControls2)
    pkg_check_modules(SDL2 REQUIRED IMPORTED_TARGET sdl2)
    if(QUILLMERE_BUILD_TESTS)
        find_package(Qt6 6.4 REQUIRED COMPONENTS QuickTest Test)
    endif()
endif()
