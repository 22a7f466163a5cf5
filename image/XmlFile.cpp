#include "XmlFile.h"

#include <libxml/hash.h>
#include <unistd.h>

#include <stdexcept>
#include <unordered_map>

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

struct XPathExpressionDeleter
{
    void operator()(xmlXPathCompExprPtr expression) const { xmlXPathFreeCompExpr(expression); }
};
using XPathExpression = std::unique_ptr<xmlXPathCompExpr, XPathExpressionDeleter>;

void Silence(void*, xmlErrorPtr) {}
}  // namespace

XmlDocument ParseXmlFile(const std::string& path)
{
    // By descriptor: given a name, the parser would take "%20" in it for a blank, unpack compressed files, print what
    // it cannot read, and wait for a pipe.
    const int descriptor = HostOpenRegular(path);
    if (descriptor < 0) {
        return nullptr;
    }
    XmlDocument document(
        xmlReadFd(descriptor, nullptr, nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    close(descriptor);
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

namespace
{
/// Compiled once: the same few expressions read every descriptor of an image. Null when it does not compile, of which
/// @p context prints nothing.
xmlXPathCompExprPtr Compiled(const std::string& expression, xmlXPathContextPtr context)
{
    thread_local std::unordered_map<std::string, XPathExpression> compiled;
    XPathExpression& entry = compiled[expression];
    if (entry == nullptr) {
        entry.reset(xmlXPathCtxtCompile(context, reinterpret_cast<const xmlChar*>(expression.c_str())));
    }
    return entry.get();
}
}  // namespace

XPathResult EvaluateXPath(const std::string& expression, xmlXPathContextPtr context)
{
    const xmlXPathCompExprPtr compiled = Compiled(expression, context);
    XPathResult result(compiled != nullptr ? xmlXPathCompiledEval(compiled, context) : nullptr);
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
