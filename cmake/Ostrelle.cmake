# What every target of the project is compiled with, and the ways to declare one.

add_library(ostrelle_options INTERFACE)
target_compile_features(ostrelle_options INTERFACE cxx_std_23)
target_compile_options(ostrelle_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # What a source file keeps to itself looks there as if a header declared it.
    target_compile_options(ostrelle_options INTERFACE -Wno-subobject-linkage)
endif()
# GLib uses "signals" as a member name, and a bare literal hides its encoding.
target_compile_definitions(ostrelle_options INTERFACE
    QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH)
target_include_directories(ostrelle_options INTERFACE ${PROJECT_SOURCE_DIR}/src)

if(OSTRELLE_SANITIZE)
    # What the sanitizers watch for is not hardened as well: the two get in each other's way.
    add_compile_options(-fsanitize=${OSTRELLE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${OSTRELLE_SANITIZE})
    if(OSTRELLE_SANITIZE STREQUAL "thread")
        add_compile_options(-Wno-tsan) # what qmlcachegen writes holds fences, which tsan overlooks
    endif()
else()
    # Every target: what comes in from the network or a tool shall not get beyond a crash.
    # script/check-binaries looks whether it took.
    add_compile_options(-fstack-protector-strong -fstack-clash-protection)
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|i.86")
        add_compile_options(-fcf-protection=full)
    elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "aarch64")
        add_compile_options(-mbranch-protection=standard)
    endif()
    # Checked calls need an optimiser, so a debug build is optimised as far as debuggers like it.
    add_compile_options($<$<CONFIG:Debug>:-Og>)
    add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3)
    add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
endif()
if(OSTRELLE_COVERAGE)
    add_compile_options(--coverage -fprofile-update=atomic -fprofile-abs-path)
    add_link_options(--coverage)
endif()
if(OSTRELLE_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# ostrelle_starts_children(<target>)
# For an executable that starts other programs: has the thread sanitizer live through that.
function(ostrelle_starts_children target)
    if(OSTRELLE_SANITIZE STREQUAL "thread")
        target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/CloneWithOwnMemory.cpp)
        target_link_options(${target} PRIVATE LINKER:--export-dynamic-symbol=clone)
        target_link_libraries(${target} PRIVATE ${CMAKE_DL_LIBS})
    endif()
endfunction()

# ostrelle_folder(<name> SOURCES <file>... [USES <library>...])
# One folder of src, as the objects ostrelle_<name>. USES names what it needs to be compiled: folders,
# with what those need, and libraries. It describes its models, so that qmllint knows them where the
# ui exposes them. Folders that use it are compiled as ostrelle_<name>_usage tells, and so wait for none
# of its objects.
function(ostrelle_folder name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;USES")
    list(TRANSFORM arg_USES APPEND _usage REGEX "^ostrelle_")
    add_library(ostrelle_${name}_usage INTERFACE)
    target_link_libraries(ostrelle_${name}_usage INTERFACE ostrelle_options ${arg_USES})
    add_library(ostrelle_${name} OBJECT ${arg_SOURCES})
    set_target_properties(ostrelle_${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_link_libraries(ostrelle_${name} PUBLIC ostrelle_${name}_usage)
    qt_extract_metatypes(ostrelle_${name})
endfunction()

# ostrelle_module(<target> NAME <name> [FOLDERS <folder>...]
#                 [SOURCES <file>...] [LINK <library>...])
# The shared library lib<name>.so, made of whole folders or of files. What one of them needs and
# nobody gives it does not link.
function(ostrelle_module target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "NAME" "FOLDERS;SOURCES;LINK")
    add_library(${target} SHARED ${arg_SOURCES})
    list(TRANSFORM arg_FOLDERS PREPEND ostrelle_)
    target_link_libraries(${target} PUBLIC ${arg_FOLDERS} ${arg_LINK})
    set_target_properties(${target} PROPERTIES
        OUTPUT_NAME ${arg_NAME}
        DEFINE_SYMBOL ""
        LINKER_LANGUAGE CXX
        INSTALL_RPATH $ORIGIN
        LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
    if(OSTRELLE_COVERAGE)
        target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/CountsAtQuickExit.cpp)
    endif()
    # What a library defines itself is not looked up by name at every start. The sanitizers' run-time
    # libraries come with the program and define what is missing only there.
    if(NOT OSTRELLE_SANITIZE)
        target_link_options(${target} PRIVATE LINKER:-Bsymbolic LINKER:-z,defs)
    endif()
endfunction()

set(lsan_options "suppressions=${PROJECT_SOURCE_DIR}/tests/lsan.supp print_suppressions=0")
# GCC's sanitizer mistakes where the C library keeps the thread-local data of libraries that are loaded
# later, and crashes while it looks for leaks there.
set(asan_options "intercept_tls_get_addr=0")
# The forked child of a process with threads only starts another program. What looks like a misuse of
# mutexes are GLib's own, which are not instrumented.
# script/test looks through what was reported.
set(tsan_options "suppressions=${PROJECT_SOURCE_DIR}/tests/tsan.supp die_after_fork=0 report_mutex_bugs=0 log_path=${CMAKE_BINARY_DIR}/report")

# ostrelle_compiled_as_test(<target>)
# Compiling tests takes longer than running them. Without an optimiser no call can be checked. Qt tells
# every test where its own folder is, which nobody asks for and which would keep them from sharing
# headers.
function(ostrelle_compiled_as_test target)
    target_compile_options(${target} PRIVATE
        -O0 -g1 -U_FORTIFY_SOURCE -UQT_TESTCASE_BUILDDIR -UQT_TESTCASE_SOURCEDIR)
endfunction()

# ostrelle_test(<name> SOURCES <file>... [LINK <library>...] [OWN_NETWORK] [OWN_HEADERS])
# A Qt Test program that CTest runs in a home directory of its own. All that runs without a display
# is there without being named. OWN_NETWORK is for a test that needs a port which is always the same,
# OWN_HEADERS for one whose libraries define more than those of the others: it cannot share headers.
function(ostrelle_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "OWN_NETWORK;OWN_HEADERS" "" "SOURCES;LINK")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ostrelle_testsupport libostrelle ${arg_LINK} Qt6::Test)
    ostrelle_starts_children(${name})
    ostrelle_compiled_as_test(${name})
    if(CMAKE_UNITY_BUILD AND NOT arg_OWN_HEADERS)
        target_precompile_headers(${name} REUSE_FROM ostrelle_testsupport)
    endif()
    set(on_own_network)
    if(arg_OWN_NETWORK)
        set(on_own_network ${PROJECT_SOURCE_DIR}/cmake/on-own-network)
    endif()
    add_test(NAME ${name} COMMAND ${on_own_network} $<TARGET_FILE:${name}>)
    # Freed memory is overwritten, so that who reads it is seen to. Most tests take seconds; with the
    # sanitizers, on a slow machine with other work, some take minutes.
    set_tests_properties(${name} PROPERTIES TIMEOUT 300 ENVIRONMENT
        "OSTRELLE_BINARY_DIR=${CMAKE_BINARY_DIR};MALLOC_PERTURB_=165;TSAN_OPTIONS=${tsan_options};LSAN_OPTIONS=${lsan_options};ASAN_OPTIONS=${asan_options}")
endfunction()

# ostrelle_tests(<folder> <topics> [<file>...] [LINK <library>...] [OWN_NETWORK] [OWN_HEADERS])
# For each topic the test test_<folder>_<topic>, made of test_<topic>.cpp and these files.
function(ostrelle_tests folder topics)
    foreach(topic ${topics})
        ostrelle_test(test_${folder}_${topic} SOURCES test_${topic}.cpp ${ARGN})
    endforeach()
endfunction()

# ostrelle_fuzz_target(<name> SOURCES <file>...)
# A libFuzzer program; its seed corpus is the folder fuzz/corpus/<name>.
function(ostrelle_fuzz_target name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE fuzzed)
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
endfunction()
