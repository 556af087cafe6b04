# Settings that every target of the project shares.

# Position of a source file in __FILE__ and in log lines: relative to the project, whatever the build directory.
add_compile_options("-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=")

function(zemtra_target target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  target_compile_options(${target} PRIVATE -fno-semantic-interposition)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
                                           -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
  if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
    target_compile_options(${target} PRIVATE -Wthread-safety)
  endif()
  if(ZEMTRA_SANITIZE)
    target_compile_options(${target} PUBLIC -fsanitize=${ZEMTRA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PUBLIC -fsanitize=${ZEMTRA_SANITIZE})
  endif()
  if(ZEMTRA_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage)
    target_link_options(${target} PRIVATE --coverage)
  endif()
endfunction()

# Optimised builds are optimised across files: a sample's road crosses a dozen of them, and the calls cost a tenth of it.
include(CheckIPOSupported)
check_ipo_supported(RESULT ZEMTRA_CAN_OPTIMISE_ACROSS_FILES OUTPUT ignored LANGUAGES CXX)

# A shared library of the project: versioned, with everything hidden that is not marked as exported.
function(zemtra_library target)
  zemtra_target(${target})
  set_target_properties(${target} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} CXX_VISIBILITY_PRESET hidden
                                             VISIBILITY_INLINES_HIDDEN ON)
  if(ZEMTRA_CAN_OPTIMISE_ACROSS_FILES AND NOT ZEMTRA_SANITIZE AND NOT ZEMTRA_COVERAGE)
    set_target_properties(${target} PROPERTIES INTERPROCEDURAL_OPTIMIZATION_RELEASE ON
                                               INTERPROCEDURAL_OPTIMIZATION_RELWITHDEBINFO ON)
  endif()
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>)
endfunction()
