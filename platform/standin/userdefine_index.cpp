/// @file Looking up user-defined records: the file is parsed once and indexed by start and tuner.
#include "platform/standin/userdefine_index.h"

#include "platform/appliance_paths.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "platform/standin/documents.h"
#include "platform/standin/transaction.h"
#include "tremolane/recording_service.h"

#include <map>
#include <optional>
#include <utility>

namespace {

using namespace appliance;

/// An index of the user-defined file. A request that only reads sees one version of the file, even
/// if another process replaces it meanwhile: to look at the file again for every schedule of a page
/// would cost more than the look-ups themselves. A request that changes files has the lock. What it
/// has saved belongs to its transaction and is not copied.
struct UserDefineIndex {
    UserDefineIndex()
    {
        if (standin::Document const* const saved =
                standin::Transaction::FindSaved(kUserDefineFile)) {
            records = &saved->value;
        } else {
            standin::LoadDocument(kUserDefineFile, loaded);
        }
        if (!records->isArray()) {
            return;
        }
        for (auto record = records->begin(); record != records->end(); ++record) {
            if (record->isObject()) {
                positions.try_emplace(
                    {IntOf(*record, member::kStartTime), IntOf(*record, member::kTuner)},
                    record.index());
            }
        }
    }

    Json::Value loaded;
    Json::Value const* records = &loaded;
    std::map<std::pair<int, int>, Json::ArrayIndex> positions; ///< by start and tuner
};

/// The index of this process, which handles one request; none if the file must be read. It is never
/// destroyed: the process ends first.
std::optional<UserDefineIndex>& Index()
{
    static auto& index = *new std::optional<UserDefineIndex>;
    return index;
}

} // namespace

void standin::ForgetUserDefineIndex()
{
    Index().reset();
}

int KALDTremolane::ReadUserDefineFromFile(Json::Value& out, int start, int tuner)
{
    if (!Index()) {
        Index().emplace();
    }
    auto const found = Index()->positions.find({start, tuner});
    if (found == Index()->positions.end()) {
        return -1;
    }
    out = (*Index()->records)[found->second];
    return static_cast<int>(found->second);
}
