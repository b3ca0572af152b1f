/// @file Looking up user-defined records: the file is parsed once and indexed by start and tuner.
#include "platform/standin/userdefine_index.h"

#include "platform/appliance_paths.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "platform/standin/documents.h"
#include "tremolane/recording_service.h"

#include <map>
#include <utility>

namespace {

using namespace appliance;

/// An index of the user-defined file. A request that only reads sees one version of the file, even
/// if another process replaces it meanwhile: to look at the file again for every schedule of a page
/// would cost more than the look-ups themselves. A request that changes files has the lock.
class UserDefineIndex {
public:
    void Forget() { m_isCurrent = false; }

    /// Reads the file, unless it was read since the last Forget().
    void Refresh()
    {
        if (m_isCurrent) {
            return;
        }
        m_isCurrent = true;
        m_positions.clear();
        standin::LoadDocument(kUserDefineFile, m_records);
        BuildIndex();
    }

    /// Finds the first record with that start and tuner. Returns its position and a copy in `out`,
    /// or -1.
    int Find(Json::Value& out, int start, int tuner) const
    {
        auto const found = m_positions.find({start, tuner});
        if (found == m_positions.end()) {
            return -1;
        }
        out = m_records[found->second];
        return found->second;
    }

private:
    void BuildIndex()
    {
        if (!m_records.isArray()) {
            return;
        }
        int position = 0;
        for (Json::Value const& record : std::as_const(m_records)) {
            if (record.isObject()) {
                m_positions.try_emplace(
                    {IntOf(record, member::kStartTime), IntOf(record, member::kTuner)}, position);
            }
            ++position;
        }
    }

    bool m_isCurrent = false;
    Json::Value m_records;
    std::map<std::pair<int, int>, int> m_positions; ///< by start and tuner
};

/// The index of this process, which handles one request. It is never destroyed: the process ends
/// first.
UserDefineIndex& Index()
{
    static UserDefineIndex& index = *new UserDefineIndex;
    return index;
}

} // namespace

void standin::ForgetUserDefineIndex()
{
    Index().Forget();
}

int KALDTremolane::ReadUserDefineFromFile(Json::Value& out, int start, int tuner)
{
    Index().Refresh();
    return Index().Find(out, start, tuner);
}
