/// @file Loading and replacing JSON documents.
#include "platform/standin/documents.h"

#include "kald/web_utils.h"
#include "platform/standin/files.h"
#include "platform/standin/json_writer.h"
#include "platform/standin/transaction.h"

#include <cerrno>
#include <utility>

namespace standin {

Load LoadDocument(std::string const& path, Json::Value& document,
                  std::span<Json::StaticString const> wanted)
{
    document = Json::Value();
    UniqueFd const fd = OpenRegularFile(path.c_str());
    if (!fd) {
        return errno == ENOENT || errno == ENOTDIR ? Load::kMissing : Load::kUnreadable;
    }
    std::string text;
    if (!ReadText(fd.Get(), text)) {
        return Load::kUnreadable;
    }
    return ParseJson(std::move(text), document, wanted) ? Load::kLoaded : Load::kNotJson;
}

bool ReplaceFile(std::string const& path, Json::Value const& document)
{
    return Transaction::KeepOldVersion(path) &&
           WriteWholeFile(path, RenderJson(document, Charset::kUtf8) + '\n');
}

} // namespace standin

bool WebUtils::LoadJsonFile(Json::Value& document, char const* path)
{
    return standin::LoadDocument(path, document) == standin::Load::kLoaded;
}

bool WebUtils::SaveJsonFile(Json::Value& document, char const* path)
{
    return standin::ReplaceFile(path, document);
}
