#pragma once

#include <libxml/parser.h>
#include <libxml/xpath.h>

#include <memory>
#include <string>

// XML files of the image database: owners of what libxml2 hands out, parsing and XPath.

struct XmlDocumentDeleter
{
    void operator()(xmlDocPtr document) const { xmlFreeDoc(document); }
};
using XmlDocument = std::unique_ptr<xmlDoc, XmlDocumentDeleter>;

struct XPathContextDeleter
{
    void operator()(xmlXPathContextPtr context) const { xmlXPathFreeContext(context); }
};
using XPathContext = std::unique_ptr<xmlXPathContext, XPathContextDeleter>;

struct XPathResultDeleter
{
    void operator()(xmlXPathObjectPtr result) const { xmlXPathFreeObject(result); }
};
using XPathResult = std::unique_ptr<xmlXPathObject, XPathResultDeleter>;

/// Parses the file with the logical path @p path. Nothing outside the file is loaded and nothing is printed.
/// @return null when the file cannot be read, is not well-formed, is nested too deeply, or declares entities that
///         could make it grow without bounds.
XmlDocument ParseXmlFile(const std::string& path);

/// A context over @p document; null when out of memory.
XPathContext NewXPathContext(xmlDocPtr document);

/// @throws std::runtime_error "Cannot allocate memory for xpath operation." when there is no result object.
XPathResult EvaluateXPath(const std::string& expression, xmlXPathContextPtr context);

/// True when @p nodes is null or empty.
bool IsEmptyNodeSet(xmlNodeSetPtr nodes);

/// Takes over a text of libxml2; null becomes the empty text.
std::string TakeXmlText(xmlChar* text);

/// True for an element of that name.
bool IsElement(xmlNodePtr node, const char* name);
