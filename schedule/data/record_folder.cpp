/// @file Whether the appliance has a folder for TV recordings.
#include "frame/schedule_recording_api.h"

#include "kald/web_utils.h"
#include "libtm/fileop.h"
#include "platform/appliance_paths.h"
#include "platform/records.h"
#include "tremolane/recording_service.h"

#include <strings.h>

#include <utility>

bool ScheduleRecordingAPI::HasRecordFolder()
{
    using namespace appliance;
    Json::Value folders;
    if (!WebUtils::LoadJsonFile(folders, kFolderList) || !folders.isArray()) {
        return false;
    }
    bool found = false;
    for (Json::Value const& element : std::as_const(folders)) {
        if (::strcasecmp(TextOf(element, "section").c_str(), "tv_record") == 0) {
            std::string const path =
                KALDTremolane::GetFullPath(TextOf(element, "share"), TextOf(element, "subpath"));
            found = libtm::critical::fileop::DoesDirExist(path) || found;
        }
    }
    return found;
}
