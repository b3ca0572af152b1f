/// @file Queries to the appliance's tools and Web APIs for its external names.
#include "network/probes.h"

#include "kald/api_runner.h"
#include "kald/libc.h"
#include "network/run_as_guard.h"
#include "platform/records.h"

#include <json/value.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <utility>

namespace Tremolane::network_utils {

namespace {

using appliance::FlagOf;

constexpr char kDdnsTool[] = "/usr/kald/sbin/kaldddnsinfo";
constexpr char kRelayTool[] = "/usr/kald/sbin/kaldrelayd";

// The line numbers by which the log identifies the guarded blocks.
constexpr int kDdnsLine = 95;
constexpr int kRelayLine = 185;

// The result of the relay query. A failure is cached too: the query is expensive and would fail
// again.
// NOLINTBEGIN(readability-identifier-naming): the prefix marks variables of the whole process
std::string s_relayName;
bool s_relayAsked = false;
bool s_relayFound = false;
// NOLINTEND(readability-identifier-naming)

/// Runs a tool with one argument. Stores the first line of its output, including the line break
/// and cut to 1023 characters. Returns false if it prints nothing or cannot be started.
bool ReadFirstLine(char const* tool, char const* argument, std::string& text)
{
    char line[1024] = {};
    std::unique_ptr<FILE, decltype(&KDLIBCPclose)> const stream(KDLIBCPopen(tool, "r", argument),
                                                                &KDLIBCPclose);
    if (!stream || std::fgets(line, sizeof line, stream.get()) == nullptr) {
        return false;
    }
    text = line;
    return true;
}

/// Calls the method "get" of a Web API. Returns the object `data` of its answer, or null if there
/// is none.
Json::Value DataOf(char const* api, int version)
{
    Json::Value answer;
    KALD::APIRunner::Exec(answer, api, version, "get", Json::Value(), "admin");
    if (!answer.isObject() || !answer["data"].isObject()) {
        return {};
    }
    return std::move(answer["data"]);
}

} // namespace

bool ReadDdnsHostName(std::string& host)
{
    if (!ReadFirstLine(kDdnsTool, "--get-hostname", host) || host.empty()) {
        return false;
    }
    host.erase(std::min(host.find(' '), host.size()));
    return true;
}

bool GetDdnsHostName(std::string& host)
{
    RunAsGuard const guard(kDdnsLine);
    return guard.Ok() && ReadDdnsHostName(host);
}

bool ReadRelayName(std::string& name)
{
    return ReadFirstLine(kRelayTool, "-p", name);
}

bool IsRelayEnabled()
{
    return FlagOf(DataOf("KALD.Core.Portway", 2), "enabled");
}

bool IsRelayPortalEnabled()
{
    Json::Value const data = DataOf("KALD.Core.Portway.Permission", 1);
    Json::Value const& services = data["services"];
    return services.isArray() &&
           std::any_of(services.begin(), services.end(), [](Json::Value const& service) {
               return FlagOf(service, "enabled") && service["id"] == "zem_portal";
           });
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
