# What every target of the project is compiled with, and the three ways to declare one.

add_library(ostrelle_options INTERFACE)
target_compile_features(ostrelle_options INTERFACE cxx_std_23)
target_compile_options(ostrelle_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # What a source file keeps to itself looks there as if a header declared it.
    target_compile_options(ostrelle_options INTERFACE -Wno-subobject-linkage)
endif()
# GLib uses "signals" as a member name, and a bare literal hides its encoding.
target_compile_definitions(ostrelle_options INTERFACE
    QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH)
target_include_directories(ostrelle_options INTERFACE ${PROJECT_SOURCE_DIR}/src)

if(OSTRELLE_SANITIZE)
    add_compile_options(-fsanitize=${OSTRELLE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${OSTRELLE_SANITIZE})
    if(OSTRELLE_SANITIZE STREQUAL "thread")
        add_compile_options(-Wno-tsan) # what qmlcachegen writes holds fences, which tsan overlooks
    endif()
endif()
if(OSTRELLE_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# ostrelle_library(<name> SOURCES <file>... [LINK <library>...])
# One subsystem. What it may use is what its link list names. It describes its models, so that
# qmllint knows them where the ui exposes them. A shared library, because what the program
# loads, with or without a display, and the modules that it loads later use the same one.
function(ostrelle_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINK")
    add_library(${name} SHARED ${arg_SOURCES})
    set_target_properties(${name} PROPERTIES
        DEFINE_SYMBOL ""
        LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
    target_link_libraries(${name} PUBLIC ostrelle_options ${arg_LINK})
    # What a library defines itself is not looked up by name at every start.
    if(NOT OSTRELLE_SANITIZE)
        target_link_options(${name} PRIVATE LINKER:-Bsymbolic)
    endif()
    qt_extract_metatypes(${name})
endfunction()

set(lsan_options "suppressions=${PROJECT_SOURCE_DIR}/tests/lsan.supp print_suppressions=0")
# GCC's sanitizer mistakes where the C library keeps the thread-local data of libraries that are loaded
# later, and crashes while it looks for leaks there.
set(asan_options "intercept_tls_get_addr=0")
# The forked child of a process with threads only starts another program. What looks like a misuse of
# mutexes are GLib's own, which are not instrumented.
set(tsan_options "suppressions=${PROJECT_SOURCE_DIR}/tests/tsan.supp die_after_fork=0 report_mutex_bugs=0")

# ostrelle_test(<name> SOURCES <file>... [LINK <library>...])
# A Qt Test program that CTest runs in a home directory of its own.
function(ostrelle_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINK")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ostrelle_options ostrelle_testsupport ${arg_LINK} Qt6::Test)
    target_compile_options(${name} PRIVATE -O0 -g1) # compiling them takes longer than running them
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 120 ENVIRONMENT
        "OSTRELLE_BINARY_DIR=${CMAKE_BINARY_DIR};TSAN_OPTIONS=${tsan_options};LSAN_OPTIONS=${lsan_options};ASAN_OPTIONS=${asan_options}")
endfunction()

# ostrelle_fuzz_target(<name> SOURCES <file>... [LINK <library>...])
# A libFuzzer program; its seed corpus is the folder fuzz/corpus/<name>.
function(ostrelle_fuzz_target name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINK")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ostrelle_options ${arg_LINK})
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
endfunction()
