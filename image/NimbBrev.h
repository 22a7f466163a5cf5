#pragma once

#include <string>

#include "ImageDatabase.h"

namespace NimbImage
{
/// One parsed brev descriptor.
class NimbImage::NimbBrev
{
public:
    /// @throws std::runtime_error when the descriptor does not parse; a plain std::exception when it cannot be read
    ///         as a brev: callers learn no more, the log says why.
    explicit NimbBrev(const std::string& path);
    NimbBrev(const NimbBrev&) = delete;
    NimbBrev& operator=(const NimbBrev&) = delete;

    /// vendor "_" type "_" name "_" version, as the profile lists it.
    std::string Id() const { return vendor + "_" + type + "_" + name + "_" + version; }

    std::string name;
    std::string version;
    std::string vendor;
    std::string type;
    bool restrictStickyFiles = false;
    std::string schemaId;

private:
    void ParseXml(const std::string& path);
    void ParseSchemaTag(const std::string& tag, const std::string& path);

    template <typename Result>
    Result ExecuteXpathExpr(const char* expression, Result (NimbBrev::*getter)(xmlNodeSetPtr))
    {
        const XPathResult result = EvaluateXPath(expression, xpathCtx.get());
        return (this->*getter)(result->nodesetval);
    }
    std::string GetXmlStringNode(xmlNodeSetPtr nodes);
    bool GetXmlRestrictStickyFiles(xmlNodeSetPtr nodes);

    XmlDocument doc;
    XPathContext xpathCtx;  // after the document that it looks into, so that it goes first
};
}  // namespace NimbImage
