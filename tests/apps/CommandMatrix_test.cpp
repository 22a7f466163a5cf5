#include "CommandMatrix.h"

#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <set>
#include <sstream>

#include "CommandTable.h"
#include "CommandTest.h"
#include "RealProgram.h"

using ::testing::HasSubstr;
namespace fs = std::filesystem;

namespace
{
const std::vector<std::string> STORES = {"/etc/talvor/configstore/current-store-1",
                                         "/etc/talvor/configstore/datafile-store",
                                         "/var/lib/talvor/configstore/schema-store"};

std::string NameOf(const MatrixRow& row)
{
    return ::testing::PrintToString(row.command + " " + ::testing::PrintToString(row.arguments));
}

enum class State
{
    WHOLE,
    MISSING,
    LOCKED,
    READ_ONLY,
    DAMAGED,
};

/// Keeps a store from everyone else.
class StoreLock
{
public:
    explicit StoreLock(const std::string& file)
    {
        sqlite3* opened = nullptr;
        EXPECT_EQ(sqlite3_open(file.c_str(), &opened), SQLITE_OK);
        database_.reset(opened);
        EXPECT_EQ(sqlite3_exec(opened, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK) << file;
    }

private:
    std::unique_ptr<sqlite3, int (*)(sqlite3*)> database_{nullptr, sqlite3_close};
};

/// A file that says, in its format's own words, that it may be read but not written: a write version above those that
/// there are. The database then answers as it does for a file on a read-only medium, to root too.
void MakeReadOnly(const std::string& file)
{
    std::fstream stream(file, std::ios::binary | std::ios::in | std::ios::out);
    constexpr std::streamoff WRITE_VERSION = 18;
    stream.seekp(WRITE_VERSION);
    stream.put(3);
}

/// A row's call by the real program on a copy of the host, with the stores in some state.
class RowCall
{
public:
    RowCall(const std::string& root, const std::string& folder, std::vector<std::string> words, State state)
        : folder_(folder)
    {
        fs::copy(root, folder, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
        for (const std::string& store : STORES) {
            Put(folder + store, state);
        }
        words.insert(words.begin(), {"--root", folder});
        const int output = open((folder + "/output").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
        const int errors = open((folder + "/errors").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
        process_ = StartProgram(words, output, errors, {"LC_ALL=C"});
        close(output);
        close(errors);
    }
    ~RowCall() { fs::remove_all(folder_); }
    RowCall(const RowCall&) = delete;
    RowCall& operator=(const RowCall&) = delete;

    void ExpectOutcome(const Outcome& expected, const std::string& name) const
    {
        EXPECT_EQ(StatusOf(process_), expected.status) << name << Read("errors");
        const bool answered = expected.status == 0 || expected.status == 3;
        EXPECT_THAT(Read(answered ? "output" : "errors"), HasSubstr(expected.text)) << name;
    }

private:
    void Put(const std::string& file, State state)
    {
        if (state == State::MISSING) {
            fs::remove(file);
        } else if (state == State::LOCKED) {
            locks_.push_back(std::make_unique<StoreLock>(file));
        } else if (state == State::READ_ONLY) {
            MakeReadOnly(file);
        } else if (state == State::DAMAGED) {
            std::ofstream(file, std::ios::binary) << std::string(8192, 'x');
        }
    }

    std::string Read(const std::string& name) const
    {
        std::ostringstream text;
        text << std::ifstream(folder_ + "/" + name, std::ios::binary).rdbuf();
        return text.str();
    }

    std::string folder_;
    std::vector<std::unique_ptr<StoreLock>> locks_;
    pid_t process_ = -1;
};

/// Every command on a host with something in each store.
class CommandMatrixTest : public CommandTest
{
protected:
    void SetUp() override
    {
        const char* schemas = R"([
            {"component": "nimb", "group": "network", "key": "dns", "schema": {"type": "object"}},
            {"component": "nimb", "group": "network", "key": "portgroups", "singleton": false, "schema":
                {"type": "object", "properties": {"name": {"type": "string", "instanceId": true}}}},
            {"component": "nimb", "group": "time", "key": "ntp", "schema": {"type": "object"}}])";
        Host().WithPackage("net-drv", "1.0.0_1.0", schemas).WithStores();
        ASSERT_EQ(Run({"schema", "process"}).status, 0);
        FillStores();
        ASSERT_EQ(Run({"boot", "record", "set", "{}"}).status, 0);
        Host().Sql("INSERT INTO DataFileMetadata (Component, KEY, DirName, FileName) VALUES ('c', 'k', 'gone', 'f')",
                   DBStore::Type::DataFileStore);
    }

    /// Runs every row, and expects what @p column says of it. Side by side, for on a locked store each waits as long
    /// as the store library does; some at a time.
    void ExpectColumn(State state, Outcome MatrixRow::*column)
    {
        constexpr std::size_t AT_ONCE = 24;
        std::vector<MatrixRow> rows = Matrix::Rows();
        std::erase_if(rows, [](const MatrixRow& row) { return row.mounts; });
        for (std::size_t first = 0; first < rows.size(); first += AT_ONCE) {
            std::vector<std::unique_ptr<RowCall>> calls;
            for (std::size_t i = first; i < std::min(first + AT_ONCE, rows.size()); ++i) {
                calls.push_back(std::make_unique<RowCall>(Host().Root(), Host().Root() + ".copy" + std::to_string(i),
                                                          Call(rows[i].command, rows[i].arguments), state));
            }
            for (std::size_t i = 0; i < calls.size(); ++i) {
                calls[i]->ExpectOutcome(rows[first + i].*column, NameOf(rows[first + i]));
            }
        }
    }

    static Words Call(const std::string& command, const Words& arguments)
    {
        std::istringstream stream(command);
        Words words{std::istream_iterator<std::string>(stream), {}};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return words;
    }
};
}  // namespace

TEST_F(CommandMatrixTest, HasARowForEveryCommand)
{
    std::set<std::string> rows;
    for (const MatrixRow& row : Matrix::Rows()) {
        rows.insert(row.command);
    }
    for (const ConfigStoreCtl::Command& command : ConfigStoreCtl::Commands()) {
        EXPECT_EQ(rows.erase(command.path), 1U) << command.path << " has no row";
    }
    EXPECT_TRUE(rows.empty()) << ::testing::PrintToString(rows) << " are no commands";
}

TEST_F(CommandMatrixTest, RefusesBadArguments)
{
    for (const MatrixRow& row : Matrix::Rows()) {
        const Ran ran = Run(Call(row.command, row.badArguments));
        EXPECT_EQ(ran.status, row.bad.status) << NameOf(row);
        EXPECT_THAT(ran.errors, HasSubstr(row.bad.text)) << NameOf(row);
        EXPECT_EQ(ran.output, "");
    }
}

TEST_F(CommandMatrixTest, WorksOnAWholeHost)
{
    ExpectColumn(State::WHOLE, &MatrixRow::works);
}

TEST_F(CommandMatrixTest, SaysThatAStoreIsMissing)
{
    ExpectColumn(State::MISSING, &MatrixRow::missing);
}

TEST_F(CommandMatrixTest, SaysThatAnotherProcessKeepsAStoreLocked)
{
    ExpectColumn(State::LOCKED, &MatrixRow::locked);
}

TEST_F(CommandMatrixTest, ReadsAStoreThatItMayNotWrite)
{
    ExpectColumn(State::READ_ONLY, &MatrixRow::readOnly);
}

TEST_F(CommandMatrixTest, SaysThatAStoreIsDamaged)
{
    ExpectColumn(State::DAMAGED, &MatrixRow::damaged);
}
