#pragma once

#include "platform/foundation/Handle.h"

#include <libxml/parser.h>
#include <libxml/xpath.h>

namespace cantorel::foundation {

// xmlFree is a variable, which a library may set to another function.
inline void freeXmlText(xmlChar *text) { xmlFree(text); }

// The handles of libxml2; the only place that names its release functions.
using XmlText = Handle<xmlChar, freeXmlText>;
using XmlParser = Handle<xmlParserCtxt, xmlFreeParserCtxt>;
using XmlTree = Handle<xmlDoc, xmlFreeDoc>;
using XmlSearch = Handle<xmlXPathContext, xmlXPathFreeContext>;
using XmlFound = Handle<xmlXPathObject, xmlXPathFreeObject>;

} // namespace cantorel::foundation
