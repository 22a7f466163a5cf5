#include <gtest/gtest.h>

#include <cctype>
#include <regex>

#include "SampleHost.h"
#include "ZubEvents.h"

namespace
{
struct Example
{
    std::string file;
    std::string text;
};

/// Layout aside: a passage may be indented differently from the file it is taken from.
std::string WithoutBlanks(const std::string& text)
{
    std::string bare;
    for (const char c : text) {
        if (std::isspace(static_cast<unsigned char>(c)) == 0) {
            bare += c;
        }
    }
    return bare;
}

/// The fenced examples of the page that name the file they are taken from ("from `FILE`:" before the fence).
std::vector<Example> QuotedExamples(const std::string& page)
{
    static const std::regex form(R"([Ff]rom\s+`(examples/host/[^`]+)`:\s+```[a-z]+\n([^`]*)```)");
    std::vector<Example> examples;
    for (std::sregex_iterator match(page.begin(), page.end(), form), end; match != end; ++match) {
        examples.push_back({(*match)[1].str(), (*match)[2].str()});
    }
    return examples;
}
}  // namespace

TEST(FileFormatsPage, QuotesTheSampleHostAsItIs)
{
    const std::vector<Example> examples = QuotedExamples(SourceText("docs/file-formats.md"));
    EXPECT_GE(examples.size(), 11U);
    for (const Example& example : examples) {
        const std::string file = WithoutBlanks(SourceText(example.file));
        EXPECT_NE(file.find(WithoutBlanks(example.text)), std::string::npos) << example.file << "\n" << example.text;
    }
}

TEST(FileFormatsPage, ListsEveryEventWithItsText)
{
    const std::string page = SourceText("docs/file-formats.md");
    for (const NimbConfigStore::ZubTemplate& event : NimbConfigStore::ZUB_TEMPLATES) {
        const std::string row = std::string("| `") + event.id + "` | " + event.text + " |\n";
        EXPECT_NE(page.find(row), std::string::npos) << event.id;
    }
}
