# Puts the template of `qorctl page` together and writes it as a C++ source:
#
#   cmake -D FOLDER=data/page -D SCRIPTS=text,main -D OUTPUT=FILE -P EmbedPage.cmake
#
# SCRIPTS are the JavaScript modules of the folder without their ends, each behind those that it
# imports from: they become one script, in which an import has nothing to do any more. All names at
# the top of the modules are different for that.

# The base64 form of 64 hexadecimal digits, which are 32 bytes.
function(to_base64 digits result)
  set(alphabet "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")
  set(text "")
  # Three hexadecimal digits are two of base64.
  foreach(place RANGE 0 63 3)
    string(SUBSTRING "${digits}00" ${place} 3 three)
    math(EXPR high "0x${three} >> 6")
    math(EXPR low "0x${three} & 63")
    string(SUBSTRING "${alphabet}" ${high} 1 first)
    string(SUBSTRING "${alphabet}" ${low} 1 second)
    string(APPEND text "${first}${second}")
  endforeach()
  # The last one would stand for the zeros alone.
  string(SUBSTRING "${text}" 0 43 text)
  set(${result} "${text}=" PARENT_SCOPE)
endfunction()

# "sha256-..." of a text, as a Content-Security-Policy names it.
function(hash_of text result)
  string(SHA256 digits "${text}")
  to_base64(${digits} base64)
  set(${result} "sha256-${base64}" PARENT_SCOPE)
endfunction()

file(READ ${FOLDER}/page.html page)
file(READ ${FOLDER}/page.css style)
set(script "\n")
string(REPLACE "," ";" names "${SCRIPTS}")
foreach(name IN LISTS names)
  file(READ ${FOLDER}/${name}.js module)
  string(REGEX REPLACE "\nimport [^\n]*" "" module "\n${module}")
  string(REGEX REPLACE "\nexport " "\n" module "${module}")
  string(APPEND script "${module}")
endforeach()
string(PREPEND style "\n")
hash_of("${style}" style_hash)
hash_of("${script}" script_hash)
string(REPLACE "STYLE_HASH" "${style_hash}" page "${page}")
string(REPLACE "SCRIPT_HASH" "${script_hash}" page "${page}")
string(REPLACE "/* page.css */" "${style}" page "${page}")
string(REPLACE "/* scripts */" "${script}" page "${page}")
file(WRITE ${OUTPUT} "#include \"page/PageTemplate.h\"\n\n"
  "const std::string_view qorctl::PAGE_TEMPLATE = R\"qorctl(${page})qorctl\";\n")
