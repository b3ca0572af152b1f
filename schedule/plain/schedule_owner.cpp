/// @file In whose name a schedule is stored, and whether one can be.
#include "frame/schedule_recording_api.h"

#include "frame/web_api_error.h"
#include "kald/user.h"
#include "schedule/data/log_source.h"

#include <syslog.h>

#include <cstdint>
#include <limits>
#include <memory>

namespace {

constexpr std::uint32_t kNoUid = std::numeric_limits<std::uint32_t>::max();

struct FreeUser {
    void operator()(KALDUser* user) const { KALDUserFree(user); }
};

} // namespace

std::optional<std::string> ScheduleRecordingAPI::LoginUidText(int lookupLine, int uidLine)
{
    KALDUser* record = nullptr;
    int const result = KALDUserGet(m_request.GetLoginUserName().c_str(), &record);
    std::unique_ptr<KALDUser, FreeUser> const user(record);
    if (result != 0) {
        ::syslog(LOG_ERR, "%s:%d Failed to KALDUserGet function.", kLogSource, lookupLine);
        SetError(kErrorFailed);
        return std::nullopt;
    }
    if (user->uid == kNoUid) {
        ::syslog(LOG_ERR, "%s:%d uid is error.", kLogSource, uidLine);
        SetError(kErrorFailed);
        return std::nullopt;
    }
    return std::to_string(user->uid);
}

std::optional<std::string> ScheduleRecordingAPI::OneShotOwner()
{
    if (!HasRecordFolder()) {
        SetError(kErrorNoRecordFolder);
        return std::nullopt;
    }
    return LoginUidText(661, 667);
}

std::optional<std::string> ScheduleRecordingAPI::RepeatOwner()
{
    std::optional<std::string> uid = LoginUidText(856, 862);
    if (uid && !HasRecordFolder()) {
        SetError(kErrorNoRecordFolder);
        return std::nullopt;
    }
    return uid;
}
