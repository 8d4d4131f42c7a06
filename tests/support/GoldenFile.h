// Files that hold what tests have seen and a person has read. With QOR_ACCEPT=1 in the environment
// they are written instead: scripts/accept does that and shows the difference.
#ifndef QORTEST_GOLDENFILE_H
#define QORTEST_GOLDENFILE_H

#include <filesystem>
#include <string>

namespace qortest {

// Whether golden files are to be written.
bool AcceptsGolden();

// Compares `text` with the file, byte for byte; a test failure where they differ.
void ExpectGoldenFile(const std::filesystem::path& path, const std::string& text);

}  // namespace qortest

#endif  // QORTEST_GOLDENFILE_H
