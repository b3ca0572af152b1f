/// @file Whether the appliance has a folder for TV recordings.
#include "frame/schedule_recording_api.h"

#include "kald/web_utils.h"
#include "libtm/fileop.h"
#include "platform/appliance_paths.h"
#include "tremolane/recording_service.h"

#include <strings.h>

#include <utility>

namespace {

/// Whether an element of the folder list names a folder for TV recordings.
bool IsRecordSection(Json::Value const& element)
{
    return element.isObject() && element["section"].isString() &&
           ::strcasecmp(element["section"].asCString(), "tv_record") == 0 &&
           element["share"].isConvertibleTo(Json::stringValue) &&
           element["subpath"].isConvertibleTo(Json::stringValue);
}

} // namespace

bool ScheduleRecordingAPI::HasRecordFolder()
{
    Json::Value folders;
    if (!WebUtils::LoadJsonFile(folders, appliance::kFolderList) || !folders.isArray()) {
        return false;
    }
    bool found = false;
    for (Json::Value const& element : std::as_const(folders)) {
        if (!IsRecordSection(element)) {
            continue;
        }
        std::string const path =
            KALDTremolane::GetFullPath(element["share"].asString(), element["subpath"].asString());
        if (libtm::critical::fileop::DoesDirExist(path)) {
            found = true;
        }
    }
    return found;
}
