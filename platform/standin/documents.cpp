/// @file Loading and replacing JSON documents.
#include "platform/standin/documents.h"

#include "kald/web_utils.h"
#include "platform/appliance_paths.h"
#include "platform/standin/files.h"
#include "platform/standin/json_writer.h"
#include "platform/standin/userdefine_index.h"

#include <cerrno>
#include <string_view>
#include <utility>

namespace standin {

Load LoadDocument(std::string const& path, Json::Value& document, Json::Value const& form)
{
    if (Document const* const saved = Transaction::FindSaved(path)) {
        document = saved->value;
        return Load::kLoaded;
    }
    document = Json::Value();
    std::string text;
    if (!ReadFile(path.c_str(), text)) {
        Transaction::NoteFailure();
        return errno == ENOENT || errno == ENOTDIR ? Load::kMissing : Load::kUnreadable;
    }
    Transaction::KeepLoaded(path, text);
    return ParseJson(std::move(text), document, form) ? Load::kLoaded : Load::kNotJson;
}

bool SaveDocument(std::string const& path, Document document)
{
    if (Transaction* const keeping = Transaction::Keeping(path)) {
        return keeping->Save(path, std::move(document));
    }
    Transaction* const transaction = Transaction::For(path);
    return (transaction == nullptr || transaction->MayReplaceFile()) &&
           WriteWholeFile(path, RenderJson(document.value, Charset::kUtf8) + '\n');
}

} // namespace standin

bool WebUtils::LoadJsonFile(Json::Value& document, char const* path)
{
    return standin::LoadDocument(path, document) == standin::Load::kLoaded;
}

bool WebUtils::SaveJsonFile(Json::Value& document, char const* path)
{
    if (std::string_view(path) == appliance::kUserDefineFile) {
        standin::ForgetUserDefineIndex();
    }
    return standin::SaveDocument(path, {std::move(document), std::nullopt});
}
