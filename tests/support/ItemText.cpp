#include "ItemText.h"

#include <array>
#include <cstdio>
#include <filesystem>

#include "GoldenFile.h"

namespace qortest {
namespace {

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\\') {
            escaped += "\\\\";
        } else if (c == '\n') {
            escaped += "\\n";
        } else if (c == '\r') {
            escaped += "\\r";
        } else if (c == '\t') {
            escaped += "\\t";
        } else if (byte < 0x20 || byte == 0x7f) {
            std::array<char, 8> hex = {};
            std::snprintf(hex.data(), hex.size(), "\\x%02x", byte);
            escaped += hex.data();
        } else {
            escaped += c;
        }
    }
    return escaped;
}

}  // namespace

std::string ItemText(const CItemDisp& item) {
    return Escaped(item.ParentName()) + " | " + Escaped(item.ItemName()) + " | " +
           Escaped(item.ItemValue()) + " | " + Escaped(item.Enable());
}

std::string ItemText(const std::list<CItemDisp*>& items) {
    std::string text;
    for (const CItemDisp* item : items) {
        text += ItemText(*item) + "\n";
    }
    return text;
}

void ExpectGoldenItems(const std::string& file, const std::list<CItemDisp*>& items) {
    ExpectGoldenFile(std::filesystem::path(QOR_TEST_DATA_DIR) / file, ItemText(items));
}

}  // namespace qortest
