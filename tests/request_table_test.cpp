/// @file Runs the tables of requests in requests/; README.md there says how they are written.
#include "tests/support/appliance.h"
#include "tests/support/seams.h"

#include <fstream>
#include <functional>
#include <iterator>
#include <regex>
#include <stdexcept>
#include <utility>

namespace {

std::vector<std::string> const kTables = {"access", "create",     "delete",    "list",
                                          "repeat", "beyond_32_bits", "userdefine"};

/// Ends the reading of a table, whose test says where.
void Require(bool condition, std::string const& otherwise)
{
    condition ? void() : throw std::runtime_error(otherwise);
}

/// The pieces of a text between marks, without the spaces around them; none is empty.
std::vector<std::string> Split(std::string const& text, std::string const& mark)
{
    std::regex const piece(Replaced("[^M ]([^M]*[^M ])?", "M", mark));
    return {std::sregex_token_iterator(text.begin(), text.end(), piece), {}};
}

/// A table as far as it is read.
class RequestTable : public Appliance, public ::testing::WithParamInterface<std::string> {
protected:
    /// Does what a line says: runs a row, or keeps what it tells of the rows below.
    void Take(std::vector<std::string> const& fields)
    {
        std::smatch parts; // the keyword, the rest, its first word, the rest behind that
        m_row = Row();
        for (std::string const& field : fields) {
            std::string const text = (&field == &fields[0] ? "" : "|") + Expanded(field);
            std::regex_match(text, parts, std::regex("(\\S+) *((\\S*) *([^]*))"));
            Require(m_keywords.contains(parts[1]), "unknown keyword " + parts.str(1));
            m_keywords.at(parts[1])(parts);
        }
        Require(m_row.name.empty() == m_row.query.empty(), "no query");
        for (std::string const& query : Split(m_row.query, " ")) {
            m_row.query = query;
            Check(m_base, {m_row}, static_cast<int>(seams::now.value_or(0)));
        }
    }

    std::map<std::string, std::string> m_unused; ///< texts that nothing uses, and where they stand
    std::string m_where;
    Row m_row;

private:
    /// Puts texts and times in the place of what stands for them.
    // NOLINTNEXTLINE(misc-no-recursion): replacements may hold texts, as deep as the pattern goes
    std::string Expanded(std::string rest)
    {
        static std::regex const use(R"(\$(\w+)(?:\(((?:[^()]|\([^()]*\))*)\))?)");
        static std::regex const replacement("(.+?) *-> *(.*)");
        static std::regex const time(R"(<(\d{4}-\d\d-\d\d) (\d\d:\d\d)>)");
        struct Inside : ScheduleRecordingAPI {
            using ScheduleRecordingAPI::DateTimeToEpoch;
        };
        std::string line;
        std::smatch found, parts;
        for (; std::regex_search(rest, found, use); rest = found.suffix().str()) {
            Require(m_texts.contains(found[1]), "unknown text $" + found.str(1));
            std::string text = m_texts.at(found[1]);
            m_unused.erase(found[1]);
            for (std::string const& change : Split(Expanded(found[2]), ";")) {
                Require(std::regex_match(change, parts, replacement), "no replacement: " + change);
                std::string const old = std::exchange(text, Replaced(text, parts[1], parts[2]));
                Require(text != old || found.str(2).find(change) == std::string::npos,
                        "nothing to replace: " + change);
            }
            line += found.prefix().str() + text;
        }
        for (line += rest; std::regex_search(line, found, time);) {
            int const epoch = Inside().DateTimeToEpoch(found.str(1).c_str(), found.str(2).c_str());
            line = found.prefix().str() + std::to_string(epoch) + found.suffix().str();
        }
        return Replaced(line, "\\n", "\n");
    }

    static std::string& FileOf(Files& files, std::string const& path)
    {
        Require(path.starts_with('/'), "no path: " + path);
        return files[path];
    }

    // A keyword a line.
    // clang-format off
    std::map<std::string, std::function<void(std::smatch const&)>> const m_keywords = {
        {"zone", [](auto& parts) { SetZone(parts[2]); }},
        {"clock", [](auto& parts) { seams::now = std::stoi(parts[2]); }},
        {"base", [this](auto& parts) { FileOf(m_base, parts[3]) = parts[4]; }},
        {"text", [this](auto& parts) {
            Require(m_texts.try_emplace(parts[3], parts[4]).second, "defined before: $" + parts.str(3));
            m_unused[parts[3]] = m_where; }},
        {"row", [this](auto& parts) { m_row.name = m_where + parts.str(2); }},
        {"|query", [this](auto& parts) { m_row.query += ' ' + parts.str(2); }},
        {"|code", [this](auto& parts) { m_row.codes.push_back(std::stoi(parts[2])); }},
        {"|user", [this](auto& parts) { m_row.user = parts[2]; }},
        {"|given", [this](auto& parts) { FileOf(m_row.before, parts[3]) = parts[4]; }},
        {"|fails_after", [this](auto& parts) { m_row.commandsBeforeFailure = std::stoi(parts[2]); }},
        {"|data", [this](auto& parts) { m_row.data = parts[2]; }},
        {"|log", [this](auto& parts) { m_row.log = parts[2]; }},
        {"|then", [this](auto& parts) { FileOf(m_row.after, parts[3]) = parts[4]; }},
        {"|commands", [this](auto& parts) { m_row.commands = parts[2]; }}};
    std::map<std::string, std::string> m_texts = {{"root", appliance::kRoot}, {"shots", kOneShot}, {"rules", kRepeat},
        {"records", kUserDefine}, {"folders", kFolders}, {"in_the_way", kInTheWay}};
    // clang-format on
    Files m_base;
};

TEST_P(RequestTable, Holds)
try {
    std::ifstream file(TABLES + GetParam() + ".table");
    std::string line, more;
    for (int number = 1; std::getline(file, line); ++number) {
        m_where = GetParam() + ".table:" + std::to_string(number) + ": ";
        for (; file.peek() == ' '; ++number, line += more) {
            std::getline(file >> std::ws, more);
        }
        if (auto const fields = Split(line.substr(0, line.find('#')), "|"); !fields.empty()) {
            Take(fields);
        }
    }
    EXPECT_NE(m_row.name, "") << TABLES << GetParam() << ".table does not end with a row";
    std::filesystem::directory_iterator const files(TABLES), end; // the tables and README.md
    EXPECT_EQ(std::distance(files, end), std::ssize(kTables) + 1) << "a table is not in kTables";
    EXPECT_TRUE(m_unused.empty()) << "not used: " << ::testing::PrintToString(m_unused);
} catch (std::exception const& error) {
    FAIL() << m_where << error.what();
}

INSTANTIATE_TEST_SUITE_P(Each, RequestTable, ::testing::ValuesIn(kTables),
                         [](auto const& table) { return table.param; });

} // namespace
