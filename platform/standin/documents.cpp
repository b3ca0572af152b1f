/// @file JSON documents through jsoncpp.
#include "platform/standin/documents.h"

#include "kald/web_utils.h"
#include "platform/standin/files.h"

#include <json/reader.h>
#include <json/writer.h>

#include <cerrno>
#include <memory>

namespace standin {

bool ParseJson(std::string const& text, Json::Value& document)
{
    document = Json::Value();
    if (text.find('\0') != std::string::npos) {
        return false; // the reader would take it for the end, and a save would drop the rest
    }
    Json::CharReaderBuilder builder; // jsoncpp's defaults take more than RFC 8259 has
    builder["collectComments"] = false;
    builder["allowComments"] = false;
    builder["allowTrailingCommas"] = false;
    builder["failIfExtra"] = true;
    std::unique_ptr<Json::CharReader> const reader(builder.newCharReader());
    try {
        if (reader->parse(text.data(), text.data() + text.size(), &document, nullptr)) {
            return true;
        }
    } catch (Json::Exception const&) { // nested deeper than the reader's limit, or out of memory
    }
    document = Json::Value();
    return false;
}

Load LoadDocument(std::string const& path, Json::Value& document)
{
    document = Json::Value();
    UniqueFd const fd = OpenRegularFile(path.c_str());
    if (!fd) {
        return errno == ENOENT || errno == ENOTDIR ? Load::kMissing : Load::kBroken;
    }
    std::string text;
    return ReadToEnd(fd.Get(), text) && ParseJson(text, document) ? Load::kLoaded : Load::kBroken;
}

std::string RenderLine(Json::Value const& document)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["commentStyle"] = "None";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, document) + '\n';
}

} // namespace standin

bool WebUtils::LoadJsonFile(Json::Value& document, char const* path)
{
    return standin::LoadDocument(path, document) == standin::Load::kLoaded;
}

bool WebUtils::SaveJsonFile(Json::Value& document, char const* path)
{
    return standin::ReplaceFile(path, standin::RenderLine(document));
}
