# Flags travel with these INTERFACE targets; no directory-wide flags anywhere.

# What every target of ours is compiled with.
add_library(qor_flags INTERFACE)
target_compile_options(qor_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wcast-qual -Wformat=2
  -Wundef
  # g++ 12 sees an overlap inside libstdc++ where a literal and a temporary string are added.
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
  # What is shipped names no folder of the machine where it was built.
  $<$<CONFIG:Release>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>
  # Without it, a -Werror for all files of a host's project is not for these.
  $<IF:$<BOOL:${QOR_WERROR}>,-Werror,-Wno-error>)

# Hardening of what is shipped. FORTIFY needs optimisation and replaces what a distribution's
# compiler may predefine; its level 3 came with g++ 12 and clang++ 9.
set(qor_fortify_level 3)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 12)
  set(qor_fortify_level 2)
endif()
add_library(qor_hardening INTERFACE)
target_compile_options(qor_hardening INTERFACE
  -fstack-protector-strong
  -fstack-clash-protection
  $<$<STREQUAL:${CMAKE_SYSTEM_PROCESSOR},x86_64>:-fcf-protection>
  $<$<NOT:$<OR:$<CONFIG:Debug>,$<BOOL:${QOR_SANITIZE}>>>:-U_FORTIFY_SOURCE>
  $<$<NOT:$<OR:$<CONFIG:Debug>,$<BOOL:${QOR_SANITIZE}>>>:-D_FORTIFY_SOURCE=${qor_fortify_level}>
  $<$<NOT:$<OR:$<CONFIG:Debug>,$<BOOL:${QOR_SANITIZE}>>>:-D_GLIBCXX_ASSERTIONS>)
target_link_options(qor_hardening INTERFACE -Wl,-z,relro -Wl,-z,now)

# Sanitizers and coverage reach everything that is linked into one process.
add_library(qor_instrumentation INTERFACE)
if(QOR_SANITIZE)
  set(qor_sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_compile_options(qor_instrumentation INTERFACE ${qor_sanitizers})
  target_link_options(qor_instrumentation INTERFACE ${qor_sanitizers})
endif()
if(QOR_FUZZ)
  # Numbers of a report must not change on their way: every lossy conversion and wrap-around that
  # the list does not name ends the process.
  # Neither ninja nor a compiler cache looks into the list; a name of its own for each content makes
  # them see a change.
  set(qor_wraps_source ${CMAKE_CURRENT_LIST_DIR}/wraps-on-purpose.txt)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${qor_wraps_source})
  file(SHA256 ${qor_wraps_source} qor_wraps_hash)
  set(qor_wraps_on_purpose ${CMAKE_BINARY_DIR}/wraps-on-purpose-${qor_wraps_hash}.txt)
  configure_file(${qor_wraps_source} ${qor_wraps_on_purpose} COPYONLY)
  target_compile_options(qor_instrumentation INTERFACE
    -fsanitize=fuzzer-no-link,integer -fno-sanitize-recover=all
    -fsanitize-ignorelist=${qor_wraps_on_purpose})
  target_link_options(qor_instrumentation INTERFACE -fsanitize=integer)
endif()
if(QOR_COVERAGE)
  target_compile_options(qor_instrumentation INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(qor_instrumentation INTERFACE --coverage)
endif()

# A shared library must name every library it needs. The sanitizers' run time is supplied by the
# program, so an instrumented library may leave its symbols open.
add_library(qor_no_undefined INTERFACE)
if(NOT QOR_SANITIZE)
  target_link_options(qor_no_undefined INTERFACE -Wl,-z,defs)
endif()

# qor_compile_together(TARGETS...): for the checks, several files of a target are compiled as one, which
# reads the large headers once, and optimises once what they make of them.
function(qor_compile_together)
  if(QOR_UNITY)
    set_target_properties(${ARGV} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 6)
  endif()
endfunction()
