#pragma once

#include <string>
#include <vector>

namespace ConfigStoreCtl
{
/// A word that may stand next in a call; one that ends in "/" is to be completed further.
struct Candidate
{
    std::string word;
    std::string help;  ///< empty for the values of an argument

    bool operator==(const Candidate&) const = default;
};

/// What the last of @p words, the words of a call so far, can become: commands, options, and the values of arguments,
/// those of a store included when it can be read. A "--root" among the words says where the store is.
std::vector<Candidate> CandidatesFor(const std::vector<std::string>& words);
}  // namespace ConfigStoreCtl
