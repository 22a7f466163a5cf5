#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

namespace ConfigStoreCtl
{
/// A failed command: where, and why. The program puts its own name and the command's in front.
class CommandFailure : public std::runtime_error
{
public:
    CommandFailure(const std::string& where, const std::string& why) : std::runtime_error(where + ": " + why) {}
};

/// The stream did not take the output.
class OutputFailure : public std::system_error
{
public:
    explicit OutputFailure(int reason) : std::system_error(reason, std::generic_category()) {}
};

/// A JSON value in the text form that the store keeps.
struct JsonText
{
    std::string text;
};

/// Texts that stand one below the other in their column of a table.
struct TextLines
{
    std::vector<std::string> texts;
};

struct Listing;
using ListingPtr = std::shared_ptr<const Listing>;

/// One value of a result; no value is null in JSON and "-" on a terminal. A listing stands in records only.
using Field = std::variant<std::monostate, bool, std::int64_t, std::string, JsonText, std::vector<std::string>,
                           TextLines, ListingPtr>;

struct Column
{
    const char* title;      ///< heading on a terminal; null: the column is in JSON only
    const char* member;     ///< member of the JSON object; null: the column is on a terminal only
    std::size_t width = 0;  ///< least width on a terminal
};

/// What a command found, in the form that both kinds of output are made of.
struct Listing
{
    std::vector<Column> columns;
    std::vector<std::vector<Field>> rows;
};

/// @p listing as a value of a record: an array of objects in JSON, on a terminal a table beside the title.
inline Field Nested(Listing listing)
{
    return std::make_shared<const Listing>(std::move(listing));
}

/// The result of one command: aligned text for people, or one JSON document. Nothing is written before Flush, so that
/// a command that fails half way has printed nothing.
class Output
{
public:
    struct Style
    {
        bool json = false;
        bool colour = false;
        std::size_t columns = 0;  ///< of the terminal: what is wider is shown as records; 0: no limit
    };
    Output(std::ostream& stream, Style style) : stream_(stream), style_(style) {}

    /// A table with a heading, or records where the terminal is too narrow for it; in JSON an array of objects.
    /// @param whenEmpty  on a terminal, said instead of a heading without rows.
    void Table(const Listing& listing, const std::string& whenEmpty = "");

    /// The one row of @p listing, a line per column; in JSON an object.
    void Record(const Listing& listing);

    /// Every row as a record; in JSON an array of objects.
    void Records(const Listing& listing, const std::string& whenEmpty = "");

    /// A table, which is left out without rows, and a line that sums it up; in JSON an object: the line as member
    /// "summary", the members of the one row of @p facts, and the table as member "rows".
    void Report(const Listing& table, const std::string& summary, const Listing& facts);

    /// A table without a heading; in JSON an array of objects.
    void Rows(const Listing& listing);

    /// A table that goes on: rows alone, the heading only with @p first; in JSON one object per line.
    void Stream(const Listing& listing, bool first);

    /// The result stands, and is bad news: it is printed, and the command fails with @p what.
    void Refuse(const std::string& what) { refusal_ = what; }
    const std::string& Refusal() const { return refusal_; }

    /// The command did what it should, and its exit status is part of the answer.
    void Answer(int status) { status_ = status; }
    int Status() const { return status_; }

    /// Writes what has been collected. @throws OutputFailure
    void Flush();

private:
    using LineList = std::vector<std::string>;
    std::size_t Limit() const;
    std::string Bold(const std::string& text) const;
    LineList TableLines(const Listing& listing, bool heading, std::size_t columns) const;
    LineList NestedLines(const std::string& title, const Listing& nested, std::size_t indent,
                         std::size_t columns) const;
    LineList RecordLines(const Listing& listing, const std::vector<Field>& row, std::size_t columns) const;
    LineList RecordList(const Listing& listing, std::size_t columns) const;
    void Append(const LineList& lines);

    std::ostream& stream_;
    Style style_;
    std::string text_;
    std::string refusal_;
    int status_ = 0;
};
}  // namespace ConfigStoreCtl
