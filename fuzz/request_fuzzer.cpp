/// @file Fuzz target: a whole request from any client, over stored files of any content. Whatever
/// they hold, one well-formed answer comes, and a stored document never becomes a broken one.
#include "fuzz/appliance.h"
#include "fuzz/fuzz_target.h"
#include "platform/standin/json_reader.h"

#include <json/value.h>

#include <array>

extern "C" int fsync(int /*fd*/)
{
    return 0; // the inputs come by the thousand, and nothing of them is to outlive the machine
}

namespace {

std::string const kFiles[] = {appliance::OneShotFile(0), appliance::RepeatFile(0),
                              appliance::kUserDefineFile, appliance::kFolderList,
                              appliance::kPrivilegeFile};

bool IsJson(std::string const& text)
{
    Json::Value document;
    return standin::ParseJson(text, document);
}

/// Headers, an empty line and one line of JSON.
void RequireAnswer(std::string const& answer)
{
    std::size_t const headersEnd = answer.find("\r\n\r\n");
    Require(headersEnd != std::string::npos);
    std::string const body = answer.substr(headersEnd + 4);
    Json::Value document;
    Require(body.find('\n') == body.size() - 1 && standin::ParseJson(body, document));
    Require(document["success"].isBool());
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    [[maybe_unused]] static bool const isLaid = (fuzz::LayAppliance(), true);
    constexpr std::size_t kParts = 4; // of the request
    std::vector<std::string> const texts = CutInput(data, size, kParts + std::size(kFiles));
    fuzz::Put(appliance::kDaemonCommands, "");
    for (std::size_t i = 0; i < std::size(kFiles); ++i) {
        fuzz::Put(kFiles[i], texts[kParts + i]);
    }
    RequireAnswer(fuzz::Answer({texts[0], texts[1], texts[2], texts[3]}));
    for (std::size_t i = 0; i < std::size(kFiles); ++i) {
        std::string const text = fuzz::ContentOf(kFiles[i]);
        Require(text == texts[kParts + i] || IsJson(text));
    }
    return 0;
}
