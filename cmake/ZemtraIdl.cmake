# zemtra_idl(TARGET <name> FILES <file.idl>...)
#
# Makes a static library of the types in IDL files, for targets to link; they include <file>.h. A type is then carried
# like any other. Files that these include must be in the same folder and among them. Needs the generator fastddsgen and
# Fast CDR.
#
# What the generator writes is checked, and changed so that decoding allocates no more than what there is to decode. What
# it is known to get wrong, or is not known, fails the build: arrays of strings, arrays of enums of several dimensions,
# containers of containers of enums, long double.

function(zemtra_idl)
  cmake_parse_arguments(PARSE_ARGV 0 ARG "" "TARGET" "FILES")
  if(NOT ARG_TARGET OR NOT ARG_FILES OR ARG_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "usage: zemtra_idl(TARGET <name> FILES <file.idl>...)")
  endif()
  find_program(ZEMTRA_FASTDDSGEN fastddsgen REQUIRED)
  find_package(fastcdr REQUIRED)

  set(directory ${CMAKE_CURRENT_BINARY_DIR}/${ARG_TARGET}_idl)
  set(generate ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/ZemtraIdlGenerate.cmake)
  list(TRANSFORM ARG_FILES PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/ REGEX "^[^/]")
  foreach(file IN LISTS ARG_FILES)
    cmake_path(GET file STEM LAST_ONLY stem)
    add_custom_command(
      OUTPUT ${directory}/${stem}.h ${directory}/${stem}.cxx
      COMMAND ${CMAKE_COMMAND} -DGENERATOR=${ZEMTRA_FASTDDSGEN} -DIDL=${file} -DDIRECTORY=${directory} -P ${generate}
      DEPENDS ${ARG_FILES} ${generate}
      COMMENT "Generating ${stem} from IDL"
      VERBATIM)
    list(APPEND sources ${directory}/${stem}.h ${directory}/${stem}.cxx)
  endforeach()

  add_library(${ARG_TARGET} STATIC ${sources})
  set_target_properties(${ARG_TARGET} PROPERTIES POSITION_INDEPENDENT_CODE ON CXX_CLANG_TIDY "")
  target_compile_features(${ARG_TARGET} PUBLIC cxx_std_17)
  target_compile_options(${ARG_TARGET} PRIVATE -w)
  target_include_directories(${ARG_TARGET} SYSTEM PUBLIC ${directory} ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/idl)
  target_link_libraries(${ARG_TARGET} PUBLIC zemtra::zemtra PRIVATE fastcdr)
endfunction()
