#include "svp/CSvpCommon.h"

#include <cstring>

#include "plugin/ComLib.h"

namespace {

constexpr char MODULE[] = "Lib_MngSrv";

}  // namespace

std::string CSvpCommon::ValueToBinString(const void* value, unsigned int size) {
    return BytesToBinString(value, size, HostOrder());
}

std::endian CSvpCommon::HostOrder() {
    const int one = 1;
    unsigned char first = 0;
    std::memcpy(&first, &one, sizeof first);
    return first == 1 ? std::endian::little : std::endian::big;
}

std::string CSvpCommon::BytesToBinString(const void* bytes, std::size_t count, std::endian order) {
    const auto* first = static_cast<const unsigned char*>(bytes);
    std::string digits(2 * count, '0');
    char* place = digits.data();
    for (std::size_t i = 0; i < count; ++i) {
        place = WriteByte(place, order == std::endian::little ? first[i] : first[count - 1 - i]);
    }
    return digits;
}

void CSvpCommon::TraceStart(const char* className) {
    CTraceUtility::WriteDebug(MODULE, CTraceUtility::TRACE_DBG_FLOW,
                              "%s::OutPutMemberToDebugLog[START]", className);
}

void CSvpCommon::TraceEnd(const char* className) {
    CTraceUtility::WriteDebug(MODULE, CTraceUtility::TRACE_DBG_FLOW,
                              "%s::OutPutMemberToDebugLog[END]", className);
}

void CSvpCommon::TraceNumber(const char* field, std::uint64_t number) {
    CTraceUtility::WriteDebug(MODULE, CTraceUtility::TRACE_DBG_RESULT, "%s=%d", field,
                              static_cast<int>(Low32(number)));
}

void CSvpCommon::TraceText(const char* field, const std::string& text) {
    CTraceUtility::WriteDebug(MODULE, CTraceUtility::TRACE_DBG_RESULT, "%s=%s", field,
                              text.c_str());
}
