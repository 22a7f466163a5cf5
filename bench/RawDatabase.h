#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

/// A database through SQLite's own interface, with the settings that the stores have, and its one open statement.
/// Every failure throws std::runtime_error with SQLite's message.
class RawDatabase
{
public:
    explicit RawDatabase(const std::string& path);
    ~RawDatabase();
    RawDatabase(const RawDatabase&) = delete;
    RawDatabase& operator=(const RawDatabase&) = delete;

    void Run(const std::string& sql);

    void Prepare(const std::string& sql);

    /// Runs the prepared statement with these texts.
    template <class Texts>
    void RunWith(const Texts& texts)
    {
        int index = 0;
        for (const std::string_view text : texts) {
            Bind(++index, text);
        }
        Step();
    }
    void RunWith(std::initializer_list<std::string_view> texts) { RunWith<>(texts); }

private:
    void Bind(int index, std::string_view text);
    void Step();
    void Check(int result);

    sqlite3* database_ = nullptr;
    sqlite3_stmt* statement_ = nullptr;
};
