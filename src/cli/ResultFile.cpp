#include "cli/ResultFile.h"

#include <fstream>

#include "plugin/Trace.h"

CResultFile::~CResultFile() {
    if (!m_Kept && DeleteFileA(m_Path.c_str()) == 0) {
        QOR_TRACE(FAILURE, "Failed to delete file(%s).", m_Path.c_str());
    }
}

bool FirstLineBeginsWith(const std::string& path, const std::string& head) {
    std::ifstream file(path);
    std::string beginning(head.size(), '\0');
    return file.read(beginning.data(), static_cast<std::streamsize>(head.size())) &&
           beginning == head;
}
