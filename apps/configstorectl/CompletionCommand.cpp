#include "Commands.h"
#include "ShellCompletion.h"

namespace ConfigStoreCtl
{
void Complete(const Arguments& arguments, Output& output)
{
    const bool describe = arguments.Has("--describe");
    Listing listing{{{nullptr, "word"}, {nullptr, "help"}, {"", nullptr}}, {}};
    for (const Candidate& candidate : CandidatesFor(arguments.values)) {
        const std::string help = candidate.help.empty() ? "" : ":" + candidate.help;
        listing.rows.push_back({candidate.word, candidate.help.empty() ? Field() : Field(candidate.help),
                                candidate.word + (describe ? help : "")});
    }
    output.Rows(listing);
}
}  // namespace ConfigStoreCtl
