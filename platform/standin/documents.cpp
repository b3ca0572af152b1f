/// @file JSON documents in files, and as the lines that are saved.
#include "platform/standin/documents.h"

#include "kald/web_utils.h"
#include "platform/standin/files.h"
#include "platform/standin/heap.h"
#include "platform/standin/transaction.h"

#include <json/writer.h>

#include <cerrno>
#include <utility>

namespace standin {

namespace {

constexpr std::size_t kMemoryPerByte = 6; ///< of a store: its text, its records, work on them

/// The document in one line, its texts as UTF-8, with a line end.
std::string RenderLine(Json::Value const& document)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["commentStyle"] = "None";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, document) + '\n';
}

} // namespace

Load LoadDocument(std::string const& path, Json::Value& document, ElementHook const& hook)
{
    document = Json::Value();
    UniqueFd const fd = OpenRegularFile(path.c_str());
    if (!fd) {
        return errno == ENOENT || errno == ENOTDIR ? Load::kMissing : Load::kBroken;
    }
    return ReadDocument(fd.Get(), document, hook) ? Load::kLoaded : Load::kBroken;
}

bool ReadDocument(int fd, Json::Value& document, ElementHook const& hook)
{
    PrepareHeap(SizeOf(fd) * kMemoryPerByte);
    std::string text;
    return ReadToEnd(fd, text) && ParseJson(std::move(text), document, hook);
}

bool ReplaceFile(std::string const& path, Json::Value const& document)
{
    return Transaction::KeepOldVersion(path) && WriteWholeFile(path, RenderLine(document));
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
