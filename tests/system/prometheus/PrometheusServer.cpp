#include "PrometheusServer.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>

#include "util/UniqueFd.h"

namespace qortest {
namespace {

using nlohmann::json;

constexpr timeval ANSWER_LIMIT = {.tv_sec = 30, .tv_usec = 0};

CStrings CommandOf(const std::filesystem::path& folder, int port, const CStrings& arguments) {
    CStrings command = {
        "/usr/bin/prometheus", "--config.file=" + (folder / "prometheus.yml").string(),
        "--storage.tsdb.path=" + (folder / "data").string(),
        "--web.listen-address=127.0.0.1:" + std::to_string(port), "--log.level=warn"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

std::string PercentEncoded(const std::string& text) {
    std::string encoded;
    for (const char byte : text) {
        std::array<char, 4> digits = {};
        std::snprintf(digits.data(), digits.size(), "%%%02X", static_cast<unsigned char>(byte));
        encoded += std::isalnum(static_cast<unsigned char>(byte)) != 0 ? std::string(1, byte)
                                                                       : digits.data();
    }
    return encoded;
}

// In the form of HTTP 1.0, which has no chunks: the answer ends with the connection.
std::string Exchange(int connection, const std::string& target) {
    const std::string request = "GET " + target + " HTTP/1.0\r\n\r\n";
    if (send(connection, request.data(), request.size(), MSG_NOSIGNAL) !=
        static_cast<ssize_t>(request.size())) {
        return "";
    }
    std::string answer;
    std::array<char, 65536> buffer = {};
    for (ssize_t got = 0; (got = recv(connection, buffer.data(), buffer.size(), 0)) > 0;) {
        answer.append(buffer.data(), static_cast<size_t>(got));
    }
    return answer;
}

}  // namespace

CPrometheusServer::CPrometheusServer(const std::filesystem::path& folder, const CStrings& arguments)
    : m_Port(FreePort()),
      m_Engine(CommandOf(folder, m_Port, arguments), folder / "prometheus.out") {}

bool CPrometheusServer::IsReady() {
    return Eventually([this] {
               return !m_Engine.IsRunning() ||
                      Fetch("/-/ready").find(" 200 OK\r\n") != std::string::npos;
           }) &&
           m_Engine.IsRunning();
}

bool CPrometheusServer::HasEvaluatedRules() {
    return Eventually([this] {
        const json groups = Get("/api/v1/rules").value("groups", json::array());
        return !groups.empty() && std::all_of(groups.begin(), groups.end(), [](const json& group) {
            return !group.at("lastEvaluation").get<std::string>().starts_with("0001-");
        });
    });
}

json CPrometheusServer::Get(const std::string& path, const CParameters& parameters) const {
    std::string target = path;
    for (const auto& [name, value] : parameters) {
        target += (target == path ? '?' : '&') + PercentEncoded(name) + '=' + PercentEncoded(value);
    }
    const std::string answer = Fetch(target);
    const size_t body = answer.find("\r\n\r\n");
    const json read =
        json::parse(body == std::string::npos ? "" : answer.substr(body + 4), nullptr, false);
    if (!read.is_object() || read.value("status", "") != "success") {
        ADD_FAILURE() << target << ": " << answer << Output();
        return nullptr;
    }
    return read.at("data");
}

json CPrometheusServer::Query(const std::string& expression, double time) const {
    const json data = Get("/api/v1/query", {{"query", expression}, {"time", std::to_string(time)}});
    return data.is_object() ? data.at("result") : json();
}

json CPrometheusServer::QueryRange(const std::string& expression, double start, double end,
                                   double step) const {
    const json data = Get("/api/v1/query_range", {{"query", expression},
                                                  {"start", std::to_string(start)},
                                                  {"end", std::to_string(end)},
                                                  {"step", std::to_string(step)}});
    return data.is_object() ? data.at("result") : json();
}

std::string CPrometheusServer::Fetch(const std::string& target) const {
    const util::CUniqueFd connection(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    setsockopt(connection.Get(), SOL_SOCKET, SO_RCVTIMEO, &ANSWER_LIMIT, sizeof(ANSWER_LIMIT));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(m_Port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const auto* const general = reinterpret_cast<const sockaddr*>(&address);
    return connect(connection.Get(), general, sizeof(address)) == 0
               ? Exchange(connection.Get(), target)
               : "";
}

}  // namespace qortest
