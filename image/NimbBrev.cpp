#include "NimbBrev.h"

#include <syslog.h>

#include <exception>
#include <stdexcept>

#include "HostUtil.h"

namespace NimbImage
{
NimbImage::NimbBrev::NimbBrev(const std::string& path) : doc(ParseXmlFile(path))
{
    if (doc == nullptr) {
        throw std::runtime_error("Cannot parse brev xml file: " + path);
    }
    xpathCtx = NewXPathContext(doc.get());
    if (xpathCtx == nullptr) {
        throw std::runtime_error("Failed to create xpath context for brev.");
    }
    try {
        ParseXml(path);
    } catch (const std::exception&) {
        throw std::exception();
    }
}

void NimbImage::NimbBrev::ParseXml(const std::string& path)
{
    name = ExecuteXpathExpr("/brev/name", &NimbBrev::GetXmlStringNode);
    version = ExecuteXpathExpr("/brev/version", &NimbBrev::GetXmlStringNode);
    vendor = ExecuteXpathExpr("/brev/vendor", &NimbBrev::GetXmlStringNode);
    type = ExecuteXpathExpr("/brev/type", &NimbBrev::GetXmlStringNode);
    restrictStickyFiles =
        ExecuteXpathExpr("/brev/software-tags/tag[.='RestrictStickyFiles']", &NimbBrev::GetXmlRestrictStickyFiles);
    const std::string tag =
        ExecuteXpathExpr("/brev/software-tags/tag[starts-with(.,'ConfigSchema:')]/text()", &NimbBrev::GetXmlStringNode);
    if (tag.empty()) {
        HostSyslog(LOG_DEBUG, "No ConfigSchema: xmlfile='%s'", path.c_str());
        return;
    }
    ParseSchemaTag(tag, path);
}

/// "ConfigSchema:ID:…" names the schema identifier between its first two colons.
void NimbImage::NimbBrev::ParseSchemaTag(const std::string& tag, const std::string& path)
{
    const std::size_t first = tag.find(':');
    const std::size_t second = first != std::string::npos ? tag.find(':', first + 1) : std::string::npos;
    if (second != std::string::npos) {
        schemaId = tag.substr(first + 1, second - first - 1);
    }
    if (schemaId.empty()) {
        const std::string message = "Failed to parse ConfigSchema tag: xmlfile='" + path + "': '" + tag + "'";
        HostSyslog(LOG_ERR, "%s", message.c_str());
        throw std::runtime_error(message);
    }
    HostSyslog(LOG_INFO, "xmlfile='%s' schemaId='%s'", path.c_str(), schemaId.c_str());
}

std::string NimbImage::NimbBrev::GetXmlStringNode(xmlNodeSetPtr nodes)
{
    return IsEmptyNodeSet(nodes) ? "" : TakeXmlText(xmlNodeGetContent(nodes->nodeTab[0]));
}

bool NimbImage::NimbBrev::GetXmlRestrictStickyFiles(xmlNodeSetPtr nodes)
{
    return !IsEmptyNodeSet(nodes);
}
}  // namespace NimbImage
