/// @file Whether the appliance has a folder for TV recordings.
#include "frame/schedule_recording_api.h"

#include "kald/web_utils.h"
#include "libtm/fileop.h"
#include "platform/appliance_paths.h"
#include "tremolane/recording_service.h"

#include <strings.h>

namespace {

/// Whether an element of the folder list is about TV recordings.
bool IsRecordSection(Json::Value const& element)
{
    return element.isObject() && element["section"].isString() &&
           ::strcasecmp(element["section"].asCString(), "tv_record") == 0;
}

} // namespace

bool ScheduleRecordingAPI::HasRecordFolder()
{
    Json::Value folders;
    if (!WebUtils::LoadJsonFile(folders, appliance::kFolderList) || !folders.isArray()) {
        return false;
    }
    bool found = false;
    for (Json::Value const& element : folders) {
        if (!IsRecordSection(element)) {
            continue;
        }
        std::string const path =
            KALDTremolane::GetFullPath(element["share"].asString(), element["subpath"].asString());
        found = found || libtm::critical::fileop::DoesDirExist(path);
    }
    return found;
}
