#include "XmlFile.h"

#include <libxml/hash.h>

#include <climits>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "HostUtil.h"

namespace
{
constexpr int LONGEST_ENTITY = 256;

/// An entity may stand for a short text, and for no other entity: what a document says then stays within a small
/// multiple of its size. The parser bounds entities of entities, but not one long one named many times.
void RefuseGrowingEntity(void* payload, void* refused, const xmlChar*)
{
    const auto* entity = static_cast<xmlEntityPtr>(payload);
    const bool grows = entity->content != nullptr &&
                       (xmlStrlen(entity->content) > LONGEST_ENTITY || xmlStrchr(entity->content, '&') != nullptr);
    *static_cast<bool*>(refused) = *static_cast<bool*>(refused) || grows;
}

bool DeclaresGrowingEntities(const xmlDoc& document)
{
    bool refused = false;
    if (document.intSubset != nullptr && document.intSubset->entities != nullptr) {
        xmlHashScan(static_cast<xmlHashTablePtr>(document.intSubset->entities), RefuseGrowingEntity, &refused);
    }
    return refused;
}

void Silence(void*, xmlErrorPtr) {}
}  // namespace

XmlDocument ParseXmlFile(const std::string& path)
{
    // From memory: given a name, the parser would take "%20" in it for a blank, unpack compressed files and print
    // what it cannot read.
    std::ostringstream content;
    content << std::ifstream(HostPath(path), std::ios::binary).rdbuf();
    const std::string text = content.str();
    if (text.size() > INT_MAX) {
        return nullptr;
    }
    XmlDocument document(xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                                       XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    if (document != nullptr && DeclaresGrowingEntities(*document)) {
        return nullptr;
    }
    return document;
}

XPathContext NewXPathContext(xmlDocPtr document)
{
    XPathContext context(xmlXPathNewContext(document));
    if (context != nullptr) {
        context->error = Silence;
    }
    return context;
}

XPathResult EvaluateXPath(const std::string& expression, xmlXPathContextPtr context)
{
    XPathResult result(xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(expression.c_str()), context));
    if (result == nullptr) {
        throw std::runtime_error("Cannot allocate memory for xpath operation.");
    }
    return result;
}

bool IsEmptyNodeSet(xmlNodeSetPtr nodes)
{
    return xmlXPathNodeSetIsEmpty(nodes);
}

std::string TakeXmlText(xmlChar* text)
{
    const std::unique_ptr<xmlChar, decltype(xmlFree)> owner(text, xmlFree);
    return text != nullptr ? reinterpret_cast<const char*>(text) : "";
}

bool IsElement(xmlNodePtr node, const char* name)
{
    return node->type == XML_ELEMENT_NODE && xmlStrEqual(node->name, reinterpret_cast<const xmlChar*>(name)) != 0;
}
