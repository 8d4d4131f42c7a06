// What `qorctl doctor` is made of: checks, and what they find.
#ifndef QORCTL_DOCTOR_CHECK_H
#define QORCTL_DOCTOR_CHECK_H

#include <string>
#include <string_view>

namespace qorctl::doctor {

class CServerFacts;

enum class EVerdict { OK, WARN, FAIL };

constexpr std::string_view VerdictName(EVerdict verdict) {
    switch (verdict) {
        case EVerdict::OK:
            return "OK";
        case EVerdict::WARN:
            return "WARN";
        case EVerdict::FAIL:
            return "FAIL";
    }
    return "";
}

struct CFinding {
    EVerdict verdict = EVerdict::OK;
    std::string reason;  // what was found; may hold bytes of files and of the loader
    std::string remedy;  // what can be done; empty when all is well
};

// A check looks, and leaves everything as it was. (The tool's version is asked for, which runs the
// tool; a file is written and removed.)
struct CCheck {
    std::string_view group;
    std::string_view name;
    CFinding (*examine)(CServerFacts& facts);
};

inline CFinding Ok(std::string reason) {
    return {EVerdict::OK, std::move(reason), ""};
}

inline CFinding Warn(std::string reason, std::string remedy) {
    return {EVerdict::WARN, std::move(reason), std::move(remedy)};
}

inline CFinding Fail(std::string reason, std::string remedy) {
    return {EVerdict::FAIL, std::move(reason), std::move(remedy)};
}

// The finding of a check whose object is missing, which another check complains of.
inline CFinding NotExamined(const std::string& why) {
    return Warn("not examined: " + why, "see above");
}

}  // namespace qorctl::doctor

#endif  // QORCTL_DOCTOR_CHECK_H
