# kelp_embed_texts(TARGET FUNCTION FILES...) puts text files into a target: the build writes the source of
#
#   namespace lab { std::string_view FUNCTION(std::string_view name); }
#
# which gives a file's text by its name without the folder, and throws std::out_of_range for another name. The target
# declares the function in a header of its own.
#
# Run as a script it writes that source.

if(CMAKE_SCRIPT_MODE_FILE)
  string(REPLACE "|" ";" files "${FILES}")
  set(entries "")
  foreach(file IN LISTS files)
    get_filename_component(name "${file}" NAME)
    file(READ "${file}" text)
    string(APPEND entries "      {\"${name}\", R\"embedded(${text})embedded\"},\n")
  endforeach()
  file(WRITE "${OUTPUT}" "#include <map>\n#include <string_view>\n\nnamespace lab {\n\n"
    "std::string_view ${FUNCTION}(std::string_view name);\n\n"
    "std::string_view ${FUNCTION}(std::string_view name) {\n"
    "  static const std::map<std::string_view, std::string_view> kTexts{\n${entries}  };\n"
    "  return kTexts.at(name);\n}\n\n}  // namespace lab\n")
  return()
endif()

set(KELP_EMBED_SCRIPT ${CMAKE_CURRENT_LIST_FILE})

function(kelp_embed_texts target function)
  set(output ${CMAKE_CURRENT_BINARY_DIR}/${function}.cpp)
  list(JOIN ARGN "|" files)
  add_custom_command(OUTPUT ${output}
    COMMAND ${CMAKE_COMMAND} -D OUTPUT=${output} -D FUNCTION=${function} -D "FILES=${files}" -P ${KELP_EMBED_SCRIPT}
    DEPENDS ${ARGN} ${KELP_EMBED_SCRIPT} VERBATIM)
  target_sources(${target} PRIVATE ${output})
endfunction()
