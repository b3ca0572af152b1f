/// @file What storing a schedule requires: a recording folder, and a login user with a uid.
#include "frame/schedule_recording_api.h"

#include "frame/web_api_error.h"
#include "kald/web_utils.h"
#include "libtm/fileop.h"
#include "platform/appliance_paths.h"
#include "platform/records.h"
#include "schedule/support_log.h"
#include "tremolane/recording_service.h"

#include <strings.h>
#include <syslog.h>

#include <cstdint>
#include <limits>
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

std::optional<std::string> ScheduleRecordingAPI::CheckCanStore(bool isRepeat)
{
    if (!isRepeat && !HasRecordFolder()) {
        SetError(kErrorNoRecordFolder);
        return std::nullopt;
    }
    unsigned int uid = 0;
    if (!GetLoginUid(&uid)) {
        ::syslog(LOG_ERR, "%s:%d Failed to KALDUserGet function.", kLogSource,
                 isRepeat ? kRepeatUserLookup : kOneShotUserLookup);
        return std::nullopt;
    }
    if (uid == std::numeric_limits<std::uint32_t>::max()) {
        ::syslog(LOG_ERR, "%s:%d uid is error.", kLogSource,
                 isRepeat ? kRepeatUserUid : kOneShotUserUid);
        SetError(kErrorFailed);
        return std::nullopt;
    }
    if (isRepeat && !HasRecordFolder()) { // a create_repeat checks in the other order
        SetError(kErrorNoRecordFolder);
        return std::nullopt;
    }
    return std::to_string(uid);
}
