// Files in memory, in the place of real ones: most of an input's time would go into the calls of
// the system otherwise. The linker redirects the calls that open, read and remove files, those of
// the C++ library included (see CMakeLists.txt); what is no memory file is left to the real ones.
//
// Thread rule: one thread, as in all targets.
#ifndef QORFUZZ_MEMORYFILES_H
#define QORFUZZ_MEMORYFILES_H

#include <cstddef>
#include <string>

namespace qorfuzz {

// From now on, or no more: what is put is found; directories that were made once are not made
// again, and what is found at a path that is no memory file is remembered.
void UseMemoryFiles(bool use);

// Makes the memory file `path`, or one that is put in its place.
void PutMemoryFile(const std::string& path, const std::string& text);

size_t MemoryFilesBelow(const std::string& directory);
size_t OpenMemoryFiles();

// A descriptor, never closed. What is written to it is in `TakeWritten()`, which empties it.
int MemoryDescriptor();
std::string TakeWritten();

}  // namespace qorfuzz

#endif  // QORFUZZ_MEMORYFILES_H
