# Every dependency comes from Debian's packages (scripts/setup.sh installs them).
find_package(ZLIB REQUIRED)
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(SNDFILE REQUIRED IMPORTED_TARGET sndfile)
# The editor: Xlib (with the shared-memory extension), cairo, FreeType and libpng.
pkg_check_modules(X11 REQUIRED IMPORTED_TARGET x11)
pkg_check_modules(XEXT REQUIRED IMPORTED_TARGET xext)
pkg_check_modules(CAIRO REQUIRED IMPORTED_TARGET cairo cairo-ft)
pkg_check_modules(FREETYPE REQUIRED IMPORTED_TARGET freetype2)
pkg_check_modules(PNG REQUIRED IMPORTED_TARGET libpng)
if(HALVERN_BUILD_TESTS)
    find_package(GTest REQUIRED)
    # The editor tests drive the pointer and keyboard through the XTest extension.
    pkg_check_modules(XTST REQUIRED IMPORTED_TARGET xtst)
endif()
if(HALVERN_BUILD_BENCH)
    find_package(benchmark REQUIRED)
endif()

# The VST 2.4 ABI: the clean-room header of Debian's fst-dev package.
find_path(FST_INCLUDE_DIR NAMES pluginterfaces/fst/fst.h)
if(NOT FST_INCLUDE_DIR)
    message(FATAL_ERROR "pluginterfaces/fst/fst.h not found: the VST 2.4 plug-in needs the ABI header "
                        "of the package fst-dev (apt-get install fst-dev), or set FST_INCLUDE_DIR to "
                        "the folder that holds pluginterfaces/.")
endif()
add_library(fst::fst INTERFACE IMPORTED)
target_include_directories(fst::fst SYSTEM INTERFACE ${FST_INCLUDE_DIR})

# The VST 3 SDK: the sources shipped in Debian's juce-modules-source-data, compiled into
# static libraries inside the build (the interfaces and helper classes the plug-in needs,
# and the hosting classes the tests' small host needs). Nothing of it is copied.
set(VST3_SDK_DIR /usr/share/juce/modules/juce_audio_processors/format_types/VST3_SDK
    CACHE PATH "Root of the VST 3 SDK (pluginterfaces/, base/, public.sdk/)")
if(NOT EXISTS ${VST3_SDK_DIR}/pluginterfaces/vst/ivstaudioprocessor.h)
    message(FATAL_ERROR "The VST 3 SDK was not found at ${VST3_SDK_DIR}: install the package "
                        "juce-modules-source-data, or set VST3_SDK_DIR.")
endif()
add_library(vst3_sdk STATIC
    ${VST3_SDK_DIR}/pluginterfaces/base/coreiids.cpp
    ${VST3_SDK_DIR}/pluginterfaces/base/funknown.cpp
    ${VST3_SDK_DIR}/pluginterfaces/base/ustring.cpp
    ${VST3_SDK_DIR}/pluginterfaces/base/conststringtable.cpp
    ${VST3_SDK_DIR}/base/source/baseiids.cpp
    ${VST3_SDK_DIR}/base/source/fobject.cpp
    ${VST3_SDK_DIR}/base/source/fdebug.cpp
    ${VST3_SDK_DIR}/base/source/fstring.cpp
    ${VST3_SDK_DIR}/base/source/updatehandler.cpp
    ${VST3_SDK_DIR}/base/thread/source/flock.cpp
    ${VST3_SDK_DIR}/public.sdk/source/common/pluginview.cpp
    ${VST3_SDK_DIR}/public.sdk/source/vst/vstbus.cpp
    ${VST3_SDK_DIR}/public.sdk/source/vst/vstcomponentbase.cpp
    ${VST3_SDK_DIR}/public.sdk/source/vst/vstcomponent.cpp
    ${VST3_SDK_DIR}/public.sdk/source/vst/vsteditcontroller.cpp
    ${VST3_SDK_DIR}/public.sdk/source/vst/vstparameters.cpp
    ${VST3_SDK_DIR}/public.sdk/source/vst/vstinitiids.cpp)
target_include_directories(vst3_sdk SYSTEM PUBLIC ${VST3_SDK_DIR})
target_compile_definitions(vst3_sdk PUBLIC $<IF:$<CONFIG:Debug>,DEVELOPMENT=1,RELEASE=1>)
target_compile_options(vst3_sdk PRIVATE -w)
target_link_libraries(vst3_sdk PUBLIC Threads::Threads)

add_library(vst3_sdk_hosting STATIC
    ${VST3_SDK_DIR}/public.sdk/source/vst/hosting/hostclasses.cpp
    ${VST3_SDK_DIR}/public.sdk/source/vst/hosting/pluginterfacesupport.cpp
    ${VST3_SDK_DIR}/public.sdk/source/common/memorystream.cpp)
target_compile_options(vst3_sdk_hosting PRIVATE -w)
target_link_libraries(vst3_sdk_hosting PUBLIC vst3_sdk)
