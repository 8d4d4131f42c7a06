# The same bytes of the same files: what CPack puts into a Debian package is in the order of the file
# system, has rights that the umask left, and states the size that the disk's blocks make of it. dpkg-deb
# packs it anew, which knows one order only. Run by cpack when the packages are made.
cmake_policy(VERSION 3.25)

# seal PACKAGE FOLDER: FOLDER is free for use.
function(seal package folder)
  execute_process(COMMAND dpkg-deb --raw-extract ${package} ${folder} COMMAND_ERROR_IS_FATAL ANY)
  # In KiB, a folder counting as one, as Debian's own tools count.
  execute_process(
    COMMAND find ${folder} -mindepth 1 -path ${folder}/DEBIAN -prune -o -type f -printf "%s\\n" -o
      -printf "1\\n"
    COMMAND awk "{ size += int(($1 + 1023) / 1024) } END { print size }"
    OUTPUT_VARIABLE size OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  execute_process(
    COMMAND sed -i "s/^Installed-Size: .*/Installed-Size: ${size}/" ${folder}/DEBIAN/control
    COMMAND_ERROR_IS_FATAL ANY)
  execute_process(
    COMMAND env LC_ALL=C sort -k 2 -o ${folder}/DEBIAN/md5sums ${folder}/DEBIAN/md5sums
    COMMAND_ERROR_IS_FATAL ANY)
  # More than one thread would make other blocks.
  execute_process(
    COMMAND env DPKG_DEB_THREADS_MAX=1
      dpkg-deb --root-owner-group -Z${compression} --build ${folder} ${package}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE ${folder})
endfunction()

if(CPACK_GENERATOR STREQUAL "DEB")
  foreach(package IN LISTS CPACK_PACKAGE_FILES)
    seal(${package} ${package}.unpacked)
  endforeach()
endif()
