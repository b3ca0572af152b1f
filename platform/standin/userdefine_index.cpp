/// @file Looking up user-defined records: the file is parsed once and indexed by start and tuner.
#include "platform/appliance_paths.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "platform/standin/documents.h"
#include "platform/standin/files.h"
#include "platform/standin/record_store.h"
#include "tremolane/recording_service.h"

#include <sys/stat.h>

#include <map>
#include <string>
#include <utility>

namespace {

using namespace appliance;
using standin::UniqueFd;

/// An index of the user-defined file, which is parsed again when the file on disk changes.
///
/// The file stays open. A file that was written, replaced, renamed or removed shows in fstat() by
/// its size, change time or link count. Resolving the path for every schedule of a page would cost
/// more than the look-ups themselves. If this process replaces a symbolic link by a file, the open
/// file does not change; therefore every save by this process also counts as a change.
class UserDefineIndex {
public:
    /// Parses the file again if it may have changed on disk.
    void Refresh()
    {
        struct stat info {};
        if (m_file && m_saves == standin::SavesOfThisProcess() &&
            ::fstat(m_file.Get(), &info) == 0 && IsSame(info)) {
            return;
        }
        *this = UserDefineIndex();
        UniqueFd fd = standin::OpenRegularFile(kUserDefineFile);
        std::string text;
        if (!fd || ::fstat(fd.Get(), &info) != 0 || !standin::ReadText(fd.Get(), text)) {
            standin::NoteFailure();
            return;
        }
        if (standin::ParseJson(std::move(text), m_records)) {
            BuildIndex();
        }
        m_file = std::move(fd);
        m_info = info;
        m_saves = standin::SavesOfThisProcess();
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
    bool IsSame(struct stat const& info) const
    {
        return info.st_nlink > 0 && info.st_size == m_info.st_size &&
               info.st_ctim.tv_sec == m_info.st_ctim.tv_sec &&
               info.st_ctim.tv_nsec == m_info.st_ctim.tv_nsec;
    }

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

    UniqueFd m_file;
    struct stat m_info {};
    int m_saves = 0;
    Json::Value m_records;
    std::map<std::pair<int, int>, int> m_positions; ///< by start and tuner
};

} // namespace

int KALDTremolane::ReadUserDefineFromFile(Json::Value& out, int start, int tuner)
{
    static UserDefineIndex& index = *new UserDefineIndex; // never destroyed: the process ends first
    index.Refresh();
    return index.Find(out, start, tuner);
}
