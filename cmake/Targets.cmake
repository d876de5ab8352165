# The folders of the machine's library, below src/.
set(TN61131_VM_FOLDERS platform platform/jsonata diag value literal vm functions payload)

# Compile options shared by every target of the tree.
add_library(tn61131_options INTERFACE)
target_compile_options(tn61131_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 reports overlapping copies inside std::string's own operator+ when it optimises (its bug 105651).
    target_compile_options(tn61131_options INTERFACE -Wno-restrict)
endif()
if(TN61131_DEVELOPER)
    target_compile_options(tn61131_options INTERFACE -Werror)
endif()
if(TN61131_SANITIZE)
    target_compile_options(tn61131_options INTERFACE
        -fsanitize=${TN61131_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(tn61131_options INTERFACE -fsanitize=${TN61131_SANITIZE})
endif()
if(TN61131_COVERAGE)
    target_compile_options(tn61131_options INTERFACE --coverage -fprofile-update=atomic)
    target_link_options(tn61131_options INTERFACE --coverage)
endif()

# Sources of one folder, without the tests that stand beside them.
function(tn61131_folder_sources result folder)
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.cpp)
    list(FILTER sources EXCLUDE REGEX "_test\\.cpp$")
    set(${result} ${sources} PARENT_SCOPE)
endfunction()
