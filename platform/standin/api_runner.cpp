/// @file Other Web APIs. Their answers are stored in files, one for each API, version and method.
#include "kald/api_runner.h"

#include "platform/appliance_paths.h"
#include "platform/standin/documents.h"

#include <string>

void KALD::APIRunner::Exec(Json::Value& out, char const* api, int version, char const* method,
                           Json::Value const& /*params*/, char const* /*user*/)
{
    std::string const file = std::string(api) + "." + std::to_string(version) + "." + method;
    out = Json::Value();
    if (file.find('/') == std::string::npos) {
        standin::LoadDocument(std::string(appliance::kWebApiFolder) + "/" + file + ".json", out);
    }
}
