# Script of zemtra_idl: lets GENERATOR read the file IDL, and puts what it makes of it into DIRECTORY, with the reading
# functions changed to read through zemtra::details::CheckedCdr.
cmake_path(GET IDL STEM LAST_ONLY stem)
cmake_path(GET IDL PARENT_PATH idl_directory)
set(raw ${DIRECTORY}/${stem}_generated)

file(REMOVE_RECURSE ${raw})
file(MAKE_DIRECTORY ${raw})
# The generator says some errors with the result of success.
execute_process(COMMAND ${GENERATOR} -replace -I ${idl_directory} -d ${raw} ${IDL} WORKING_DIRECTORY ${raw}
                RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT result EQUAL 0 OR output MATCHES "ERROR|error:")
  message(FATAL_ERROR "${IDL}: the generator failed\n${output}")
endif()

function(refuse pattern why)
  if(header MATCHES "${pattern}" OR code MATCHES "${pattern}")
    message(FATAL_ERROR "${IDL}: ${why}: ${CMAKE_MATCH_0}")
  endif()
endfunction()

file(READ ${raw}/${stem}.h header)
file(READ ${raw}/${stem}.cxx code)
set(name "[A-Za-z0-9_]+")
# The generator's comments with hashes of its objects, which differ from run to run.
string(REGEX REPLACE "[^\n]*// m_${name} com\\.eprosima\\.[^\n]*\n" "" code "${code}")

refuse("long double" "what stands for long double in CDR is not what the machine has")
refuse("for \\(const auto& str : m_${name}\\)" "the generator writes arrays of strings, but does not read them; use a sequence")

string(REPLACE "return ();" "return true;" code "${code}")  # the comparison of what has no members
string(REPLACE "#include <fastcdr/Cdr.h>" "#include <fastcdr/Cdr.h>\n#include <zemtra/details/checked_cdr.hpp>" code "${code}")
string(REGEX REPLACE "eprosima::fastcdr::Cdr& dcdr\\)\n{" "eprosima::fastcdr::Cdr& unchecked)\n{\n    zemtra::details::CheckedCdr dcdr(unchecked);" code "${code}")
string(REGEX REPLACE "::deserialize\\(dcdr\\);" "::deserialize(unchecked);" code "${code}")
string(REGEX REPLACE "(m_${name})\\.resize\\((seq_length|sequence_size)\\);" "dcdr.resize(\\1, \\2);" code "${code}")
string(REGEX REPLACE "dcdr\\.deserializeArray\\(reinterpret_cast<uint32_t\\*>\\((m_${name})\\.data\\(\\)\\), (seq_length|m_${name}\\.size\\(\\))\\);"
                     "dcdr.enums(\\1);" code "${code}")

# Nothing but these may be left that reads.
refuse("m_${name}\\.resize\\(" "the generator makes room in a way that is not known")
string(REGEX MATCHALL "void [A-Za-z0-9_:]+::deserialize\\(" readers "${code}")
string(REGEX MATCHALL "CheckedCdr dcdr\\(unchecked\\)" checked "${code}")
list(LENGTH readers reader_count)
list(LENGTH checked checked_count)
if(NOT reader_count EQUAL checked_count)
  message(FATAL_ERROR "${IDL}: ${reader_count} functions read, but only ${checked_count} do so in a way that is known")
endif()
string(REPLACE ";" "@" lines "${code}")
string(REGEX MATCHALL "[^\n]*dcdr[^\n]*" lines "${lines}")
foreach(line IN LISTS lines)
  if(NOT line MATCHES "^ *dcdr >> (m_)?${name}@(break@|})?$" AND NOT line MATCHES "^ *dcdr\\.(resize|enums)\\([a-z0-9A-Z_, ]+\\)@$"
     AND NOT line MATCHES "^ *zemtra::details::CheckedCdr dcdr\\(unchecked\\)@$")
    message(FATAL_ERROR "${IDL}: the generator reads in a way that is not known: ${line}")
  endif()
endforeach()

file(WRITE ${DIRECTORY}/${stem}.cxx "${code}")
file(WRITE ${DIRECTORY}/${stem}.h "${header}")
