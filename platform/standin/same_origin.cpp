/// @file Comparing the origin of a request with the appliance's own.
#include "platform/standin/same_origin.h"

#include "platform/environment.h"

#include <strings.h>

#include <string>

namespace standin {

namespace {

using appliance::Environment;

/// Returns whether an origin, a scheme with host and port, is that of this request's pages.
bool IsOwnOrigin(std::string const& origin)
{
    bool const isSecure = ::strcasecmp(Environment("HTTPS").c_str(), "on") == 0 ||
                          Environment("REQUEST_SCHEME") == "https";
    std::string const defaultPort = isSecure ? ":443" : ":80"; // browsers leave it out of an origin
    std::string own = (isSecure ? "https://" : "http://") + Environment("HTTP_HOST");
    if (own.ends_with(defaultPort)) {
        own.resize(own.size() - defaultPort.size());
    }
    // Some web servers leave the port out of HTTP_HOST.
    std::string const ownWithPort = own + ':' + Environment("SERVER_PORT");
    return ::strcasecmp(origin.c_str(), own.c_str()) == 0 ||
           ::strcasecmp(origin.c_str(), ownWithPort.c_str()) == 0;
}

} // namespace

bool IsForeignRequest()
{
    std::string const site = Environment("HTTP_SEC_FETCH_SITE");
    std::string const origin = Environment("HTTP_ORIGIN");
    return (!site.empty() && site != "same-origin" && site != "none") ||
           (!origin.empty() && !IsOwnOrigin(origin));
}

} // namespace standin
