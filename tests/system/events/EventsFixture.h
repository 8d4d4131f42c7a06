// Fixture: `qorctl watch --exec` on a simulated server, with programs that the test writes.
#ifndef QORTEST_EVENTSFIXTURE_H
#define QORTEST_EVENTSFIXTURE_H

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ServerFixture.h"

namespace qortest {

class CEventsFixture : public CServerFixture {
protected:
    std::string State() const { return Folder() / "state"; }
    std::string Taken() const { return Folder() / "taken"; }

    // A program of that text, run by a shell that stops at the first failure.
    std::string Program(const std::string& text) const {
        const std::string path = Folder() / "program";
        WriteFile(path, "#!/bin/sh -e\n" + text);
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        return path;
    }
    // One that takes each event.
    std::string TakingProgram() const { return Program("cat >> '" + Taken() + "'\n"); }

    // The shell's function `watch`, which waits a second from one request to the next.
    std::string WatchBy(const std::string& program) const {
        return "cd '" + Folder().string() + "'; watch() { qorctl watch --interval 1 --exec '" +
               program + "' --state '" + State() + "' \"$@\"; }; ";
    }
    CEnd Watch(const std::string& host, const std::string& program,
               const std::string& options = "--count 1") const {
        return Shell(host, WatchBy(program) + "watch " + options);
    }

    // The events that were taken, each of which fits the schema.
    std::vector<nlohmann::json> Events() const {
        std::vector<nlohmann::json> events;
        if (std::filesystem::exists(Taken())) {
            for (const std::string& line : Lines(ReadFile(Taken()))) {
                WriteFile(Folder() / "event.json", line);
                const CEnd end =
                    RunProgram({PYTHON, VALIDATE_JSON, JSON_SCHEMA, Folder() / "event.json"});
                EXPECT_EQ(end.status, 0) << end.out << end.err << line;
                events.push_back(nlohmann::json::parse(line, nullptr, false));
            }
        }
        return events;
    }
    CStrings Named(const char* member) const {
        CStrings values;
        for (const nlohmann::json& event : Events()) {
            values.push_back(event.value(member, ""));
        }
        return values;
    }
    nlohmann::json StateJson() const { return nlohmann::json::parse(ReadFile(State())); }
};

}  // namespace qortest

#endif  // QORTEST_EVENTSFIXTURE_H
