#pragma once

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "NimbImage.h"
#include "XmlFile.h"

namespace NimbImage
{
/// One reading of the image database; holds its lock for its lifetime.
class NimbImage
{
public:
    class NimbBrev;
    using NodeSetHandler = std::function<void(NimbImage&, xmlNodeSetPtr)>;

    /// Locks the database and opens the image profile. @throws std::runtime_error
    NimbImage();
    ~NimbImage();
    NimbImage(const NimbImage&) = delete;
    NimbImage& operator=(const NimbImage&) = delete;

    /// Profile and descriptors, merged.
    std::unordered_map<std::string, BrevInfo> Get();
    std::unordered_set<std::string> GetBrevIds();
    void Dump();

    /// Hands the node set that @p expression selects in the profile, possibly null, to @p handler.
    void ExecuteXpathExpr(const std::string& expression, const NodeSetHandler& handler);

private:
    void LockImageDB();
    void UnlockImageDB();
    static std::string GetImageProfilePath();
    void GetXmlBrevIdDetails(xmlNodeSetPtr nodes);
    void GetXmlBrevDetails(xmlNodeSetPtr nodes);
    void GetNimbBrevs();
    void MergeBrev(const NimbBrev& brev);

    struct LockRelease
    {
        void operator()(FILE* file) const;
    };

    std::unordered_map<std::string, BrevInfo> brevs;
    std::unordered_set<std::string> brevIds;
    XmlDocument doc;
    XPathContext xpathCtx;
    std::unique_ptr<FILE, LockRelease> lockFile;  // open while the lock is held
};
}  // namespace NimbImage
