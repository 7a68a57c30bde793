#pragma once

#include <libxml/parser.h>
#include <libxml/xpath.h>

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace quillmere::testing {

// A document as a strict parser reads it.
class XMLDocument {
public:
    // Throws std::runtime_error, with what the parser says, for text that is not well-formed.
    explicit XMLDocument(const std::string& text)
        : document_(xmlReadMemory(text.data(), static_cast<int>(text.size()), "document.xml", nullptr,
                                  XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE),
                    &xmlFreeDoc) {
        if (document_) return;
        const xmlError* const error = xmlGetLastError();
        throw std::runtime_error(error != nullptr ? error->message : "no document");
    }

    // The texts of everything that an XPath expression finds, in the order of the document. Elements of any
    // namespace are found with local-name().
    [[nodiscard]] std::vector<std::string> texts(const std::string& path) const {
        const std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)> context(
            xmlXPathNewContext(document_.get()), &xmlXPathFreeContext);
        const std::unique_ptr<xmlXPathObject, decltype(&xmlXPathFreeObject)> found(
            xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(path.c_str()), context.get()),
            &xmlXPathFreeObject);
        if (!found) throw std::runtime_error("no path: " + path);
        std::vector<std::string> texts;
        for (int i = 0; found->nodesetval != nullptr && i < found->nodesetval->nodeNr; ++i) {
            const std::unique_ptr<xmlChar, void (*)(xmlChar*)> text(
                xmlNodeGetContent(found->nodesetval->nodeTab[i]), [](xmlChar* one) { xmlFree(one); });
            texts.emplace_back(reinterpret_cast<const char*>(text.get()));
        }
        return texts;
    }
    [[nodiscard]] std::size_t count(const std::string& path) const { return texts(path).size(); }

private:
    std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document_;
};

}  // namespace quillmere::testing
