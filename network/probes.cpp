/// @file The questions to the appliance's tools and Web APIs.
#include "network/probes.h"

#include "kald/api_runner.h"
#include "kald/libc.h"
#include "network/run_as_guard.h"

#include <json/value.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <utility>

namespace Tremolane::network_utils {

namespace {

constexpr char kDdnsTool[] = "/usr/kald/sbin/kaldddnsinfo";
constexpr char kRelayTool[] = "/usr/kald/sbin/kaldrelayd";

// The guarded blocks, as the log names them.
constexpr int kDdnsLine = 95;
constexpr int kRelayLine = 185;

// A query that failed is remembered too: it is not cheap, and would fail again.
// NOLINTBEGIN(readability-identifier-naming): the prefix says that they live as long as the process
std::string s_relayName;
bool s_relayAsked = false;
bool s_relayFound = false;
// NOLINTEND(readability-identifier-naming)

struct ClosePipe {
    void operator()(FILE* stream) const { KDLIBCPclose(stream); }
};

/// The first line that a tool prints, with its line end, cut to what the buffer holds.
std::optional<std::string> FirstLineOf(char const* tool, char const* argument)
{
    char line[1024] = {};
    std::unique_ptr<FILE, ClosePipe> const stream(KDLIBCPopen(tool, "r", argument));
    if (!stream || std::fgets(line, sizeof line, stream.get()) == nullptr) {
        return std::nullopt;
    }
    return line;
}

/// The object `data` in the answer of a Web API's method "get"; null if it gives none.
Json::Value DataOf(char const* api, int version)
{
    Json::Value answer;
    KALD::APIRunner::Exec(answer, api, version, "get", Json::Value(), "admin");
    if (!answer.isObject() || !answer["data"].isObject()) {
        return {};
    }
    return std::move(answer["data"]);
}

/// Whether the member `enabled` of an object, or of null, reads true. Text, arrays and objects have
/// no such reading.
bool IsEnabled(Json::Value const& object)
{
    Json::Value const& enabled = object["enabled"];
    return enabled.isConvertibleTo(Json::booleanValue) && enabled.asBool();
}

} // namespace

bool ReadDdnsHostName(std::string& host)
{
    std::optional<std::string> const line = FirstLineOf(kDdnsTool, "--get-hostname");
    if (!line) {
        return false;
    }
    host = line->substr(0, line->find(' '));
    return !line->empty();
}

bool GetDdnsHostName(std::string& host)
{
    RunAsGuard const guard(kDdnsLine);
    return guard.Ok() && ReadDdnsHostName(host);
}

bool ReadRelayName(std::string& name)
{
    std::optional<std::string> const line = FirstLineOf(kRelayTool, "-p");
    if (!line) {
        return false;
    }
    name = *line;
    return true;
}

bool IsRelayEnabled()
{
    return IsEnabled(DataOf("KALD.Core.Portway", 2));
}

bool IsRelayPortalEnabled()
{
    Json::Value const data = DataOf("KALD.Core.Portway.Permission", 1);
    Json::Value const& services = data["services"];
    if (!services.isArray()) {
        return false;
    }
    for (Json::Value const& service : services) {
        if (service.isObject() && IsEnabled(service) && service["id"] == "zem_portal") {
            return true;
        }
    }
    return false;
}

bool QueryRelayName(std::string& name)
{
    return IsRelayEnabled() && IsRelayPortalEnabled() && ReadRelayName(name);
}

bool GetRelayName(std::string& name)
{
    if (!s_relayAsked) {
        RunAsGuard const guard(kRelayLine);
        s_relayFound = guard.Ok() && QueryRelayName(s_relayName);
        s_relayAsked = true;
    }
    name = s_relayName;
    return s_relayFound;
}

} // namespace Tremolane::network_utils
