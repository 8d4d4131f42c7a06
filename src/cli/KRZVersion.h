#ifndef QOR_CLI_KRZVERSION_H
#define QOR_CLI_KRZVERSION_H

#include <optional>
#include <string>

// A tool version of the form "major.minor". Leading digits count; a part without any is 0.
struct CKRZVersion {
    int major = 0;
    int minor = 0;

    // Nothing unless `text` has exactly two parts.
    static std::optional<CKRZVersion> Parse(const std::string& text);

    // The last release whose reports lack something is 4.3.
    bool IsOldForRAID() const { return major <= 3 || (major == 4 && minor <= 3); }
    // PCIe SSDs came with 7.0.
    bool IsOldForSSD() const { return major <= 6; }
};

#endif  // QOR_CLI_KRZVERSION_H
