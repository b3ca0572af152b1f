/// @file Comparing the origin of a request with the appliance's own.
#include "platform/standin/same_origin.h"

#include "platform/environment.h"

#include <strings.h>

#include <string>

namespace standin {

namespace {

using appliance::Environment;

/// Returns the origin that this request's pages have: scheme, host and port.
std::string OwnOrigin()
{
    bool const isSecure = ::strcasecmp(Environment("HTTPS").c_str(), "on") == 0 ||
                          Environment("REQUEST_SCHEME") == "https";
    std::string host = Environment("HTTP_HOST");
    std::string const defaultPort = isSecure ? ":443" : ":80"; // browsers leave it out of an origin
    if (host.ends_with(defaultPort)) {
        host.resize(host.size() - defaultPort.size());
    }
    return (isSecure ? "https://" : "http://") + host;
}

} // namespace

bool IsForeignRequest()
{
    std::string const site = Environment("HTTP_SEC_FETCH_SITE");
    std::string const origin = Environment("HTTP_ORIGIN");
    return (!site.empty() && site != "same-origin" && site != "none") ||
           (!origin.empty() && ::strcasecmp(origin.c_str(), OwnOrigin().c_str()) != 0);
}

} // namespace standin
