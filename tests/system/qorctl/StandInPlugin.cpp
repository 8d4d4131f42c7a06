// A plug-in that answers as a test tells it.
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "StandInAnswer.h"
#include "plugin/ItemDisp.h"
#include "plugin/MngSrv_QorLibIF.h"

namespace {

using CRecord = std::vector<std::string>;

// An exception whose code is unloaded with this library.
class CPrivateError : public std::exception {
public:
    const char* what() const noexcept override { return "private to the plug-in"; }
};

std::vector<std::string> Split(const std::string& text, char end) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, end);) {
        parts.push_back(part);
    }
    return parts;
}

std::string AnswerName() {
    const char* path = std::getenv("QOR_STAND_IN_ANSWER");
    return path == nullptr ? "" : path;
}

// A program may hold the plug-in in one process for each request.
int ReadCount() {
    int count = 0;
    std::ifstream(AnswerName() + ".count") >> count;
    return count;
}

// The requests for items so far.
int s_Requests = ReadCount();

void CountRequest() {
    ++s_Requests;
    std::ofstream(AnswerName() + ".count") << s_Requests;
}

std::ifstream OpenAnswer() {
    const std::string name = AnswerName();
    std::ifstream numbered(name + "." + std::to_string(s_Requests), std::ios::binary);
    return numbered ? std::move(numbered) : std::ifstream(name, std::ios::binary);
}

std::vector<CRecord> ReadAnswer() {
    std::ifstream file = OpenAnswer();
    const std::string text((std::istreambuf_iterator<char>(file)), {});
    std::vector<CRecord> records;
    for (const std::string& record : Split(text, qortest::RECORD_END)) {
        records.push_back(Split(record, qortest::FIELD_END));
        records.back().resize(5);
    }
    return records;
}

void Log(const std::string& line) {
    if (const char* path = std::getenv("QOR_STAND_IN_LOG")) {
        std::ofstream(path, std::ios::app) << line << '\n';
    }
}

void ThrowIfAsked(const std::string& where) {
    for (const CRecord& record : ReadAnswer()) {
        if (record[0] != "throw" || record[1] != where) {
            continue;
        }
        if (record[2] == "out_of_range") {
            throw std::out_of_range("position 9\x1b[31m beyond the text");
        }
        if (record[2] == "private") {
            throw CPrivateError();
        }
        throw 7;
    }
}

bool IsAsked(const std::string& word) {
    for (const CRecord& record : ReadAnswer()) {
        if (record[0] == word) {
            return true;
        }
    }
    return false;
}

// The field of the record `word`; empty when there is none.
std::string AnswerText(const std::string& word) {
    for (const CRecord& record : ReadAnswer()) {
        if (record[0] == word) {
            return record[1];
        }
    }
    return "";
}

unsigned char AnswerTexts(const std::string& operation, std::string* errorCode,
                          std::string* noticeCode, std::string* errorDetail) {
    *errorCode = AnswerText("error");
    *noticeCode = AnswerText("notice");
    *errorDetail = AnswerText("detail");
    ThrowIfAsked(operation);
    return AnswerText("result") == "0" ? 0 : 1;
}

unsigned char AnswerItems(const std::string& operation, std::list<CItemDisp*>* items,
                          std::string* errorCode, std::string* noticeCode,
                          std::string* errorDetail) {
    CountRequest();
    Log(operation + " " + std::to_string(items->size()) + *errorCode + *noticeCode + *errorDetail);
    if (IsAsked("wait")) {
        std::ifstream(AnswerText("wait")).get();
    }
    for (const CRecord& record : ReadAnswer()) {
        if (record[0] == "item") {
            items->push_back(CreateItemDisp(record[1].c_str(), record[2].c_str(), record[3].c_str(),
                                            record[4].c_str()));
        }
    }
    return AnswerTexts(operation, errorCode, noticeCode, errorDetail);
}

__attribute__((destructor)) void LogUnload() {
    Log("unload");
}

}  // namespace

CMngSrv_QorLibIF::CMngSrv_QorLibIF() : m_pLibMan(nullptr) {}

CMngSrv_QorLibIF::~CMngSrv_QorLibIF() {
    Log(m_pLibMan == nullptr ? "delete" : "delete twice");
}

unsigned char CMngSrv_QorLibIF::GetRAIDInfo(std::list<CItemDisp*>* items, std::string* errorCode,
                                            std::string* noticeCode, std::string* errorDetail) {
    return AnswerItems("GetRAIDInfo", items, errorCode, noticeCode, errorDetail);
}

unsigned char CMngSrv_QorLibIF::GetStorageInfo(std::list<CItemDisp*>* items, std::string* errorCode,
                                               std::string* noticeCode, std::string* errorDetail) {
    return AnswerItems("GetStorageInfo", items, errorCode, noticeCode, errorDetail);
}

unsigned char CMngSrv_QorLibIF::GetPDInfo(long controller, long enclosure, long slot,
                                          std::list<CItemDisp*>* items, std::string* errorCode,
                                          std::string* noticeCode, std::string* errorDetail) {
    Log("of " + std::to_string(controller) + " [" + std::to_string(enclosure) + ":" +
        std::to_string(slot) + "]");
    return AnswerItems("GetPDInfo", items, errorCode, noticeCode, errorDetail);
}

unsigned char CMngSrv_QorLibIF::GetCtrlPDInfoBinaryString(std::string* binary,
                                                          std::string* errorCode,
                                                          std::string* noticeCode) {
    Log("GetCtrlPDInfoBinaryString " + *binary + *errorCode + *noticeCode);
    *binary = AnswerText("digits");
    std::string noDetail;
    return AnswerTexts("GetCtrlPDInfoBinaryString", errorCode, noticeCode, &noDetail);
}

unsigned int CMngSrv_QorLibIF::XmlSerialize(unsigned int type, const char* component, void* data,
                                            char** out) {
    static std::string document;
    Log("XmlSerialize " + std::to_string(type) + " '" + component + "' " +
        std::to_string(static_cast<std::list<CItemDisp*>*>(data)->size()) +
        (*out == nullptr ? "" : " set"));
    ThrowIfAsked("XmlSerialize");
    if (IsAsked("document")) {
        document = AnswerText("document");
        *out = document.data();
    }
    const std::string result = AnswerText("xml-result");
    return result.empty() ? 0 : static_cast<unsigned int>(std::stoul(result, nullptr, 16));
}

void CMngSrv_QorLibIF::FreeItemList(std::list<CItemDisp*>* items) {
    Log("FreeItemList " + std::to_string(items->size()));
    for (CItemDisp* item : *items) {
        DeleteItemDisp(item);
    }
    items->clear();
    ThrowIfAsked("FreeItemList");
}

// The operations that the program has no use for.

unsigned char CMngSrv_QorLibIF::GetRAIDInfo(std::list<CItemDisp*>*, std::string*, std::string*) {
    Log("short GetRAIDInfo");
    return 0;
}

unsigned char CMngSrv_QorLibIF::GetPDInfo(long, long, long, std::list<CItemDisp*>*, std::string*,
                                          std::string*) {
    Log("short GetPDInfo");
    return 0;
}

unsigned int CMngSrv_QorLibIF::KRZExecCli(const std::string& command, unsigned long* exitCode,
                                          const std::string& resultFile) {
    Log("KRZExecCli " + command);
    ThrowIfAsked("KRZExecCli");
    for (const CRecord& record : ReadAnswer()) {
        if (record[0] == "exec") {
            std::ofstream(resultFile, std::ios::binary) << record[3];
            *exitCode = std::stoul(record[2]);
            return static_cast<unsigned int>(std::stoul(record[1]));
        }
    }
    return 0;
}

void* CreateLibIF() {
    Log("create");
    ThrowIfAsked("CreateLibIF");
    return IsAsked("no-object") ? nullptr : new CMngSrv_QorLibIF;
}

void DeleteLibIF(void* object) {
    delete static_cast<CMngSrv_QorLibIF*>(object);
}
