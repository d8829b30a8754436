// OutputTestHelpers.h - a hand-written object class that stores any element tree it reads
// and writes it back, and small file helpers, for the output tests of this folder.
#ifndef QZXML_TESTS_WRITERS_OUTPUTTESTHELPERS_H
#define QZXML_TESTS_WRITERS_OUTPUTTESTHELPERS_H

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "binding/SmartPtr.h"
#include "binding/XmlObjectBase.h"
#include "foundation/Exceptions.h"
#include "support/TestSupport.h"
#include "tree/XmlAttribute.h"
#include "tree/XmlElement.h"
#include "values/BinaryData.h"
#include "writers/XmlTextWriter.h"

namespace QzXmlTest {

using namespace QzXmlLib16;
using QzTest::MessageOf;

// An object that stores whatever element tree it reads and writes it back: the same
// events the generated classes send, without meta-data. Whitespace-only text of an
// element with children is layout and is dropped, as generated classes drop it.
class CTreeObject : public CXmlObjectBase {
public:
    struct Node {
        std::string uri;
        std::string name;
        std::vector<std::vector<std::string>> attributes; // uri, name, value
        std::string text;
        std::vector<std::unique_ptr<Node>> children;
    };

    // Fails with "boom" once this many elements have been written; -1 never.
    int m_failAfter = -1;
    Node m_root;

    CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override { return m_root.uri; }
    std::string GetNamespace() const override { return m_root.uri; }

protected:
    void ToXml_Int(CXmlWriter* writer, bool, const char*, const CSerializationContext&, bool) const override {
        int written = 0;
        Write(writer, m_root, written);
    }

    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement*, const CSerializationContext&,
                             bool) override {
        m_root = Node();
        Read(element, m_root);
        return nullptr;
    }

private:
    void Write(CXmlWriter* writer, const Node& node, int& written) const {
        if (m_failAfter >= 0 && written++ >= m_failAfter)
            throw CQzException("boom");
        writer->WriteStartElement(node.name, node.uri);
        for (const auto& attribute : node.attributes)
            writer->WriteAttributeString(attribute[1], attribute[0], attribute[2], ItemString);
        writer->WriteString(node.text, ItemString, false);
        for (const auto& child : node.children)
            Write(writer, *child, written);
        writer->WriteEndElement();
    }

    static void Read(const CXmlElement* element, Node& node) {
        node.uri = element->GetNamespaceURI();
        node.name = element->GetLocalName();
        for (const CXmlAttribute* attribute : element->GetAttributes())
            node.attributes.push_back(
                {attribute->GetNamespaceURI(), attribute->GetLocalName(), attribute->GetValue()});
        node.text = element->GetText();
        if (element->GetFirstElement() != nullptr &&
            node.text.find_first_not_of(" \t\r\n") == std::string::npos)
            node.text.clear();
        for (const CXmlElement* child = element->GetFirstElement(); child != nullptr;
             child = child->GetNextSiblingElement()) {
            node.children.emplace_back(new Node());
            Read(child, *node.children.back());
        }
    }
};

inline CSmartPtr<CTreeObject> Load(const std::string& xml) {
    CSmartPtr<CTreeObject> object(new CTreeObject());
    object->FromXml(xml.c_str());
    return object;
}

inline std::string ToString(const CBinaryData& data) {
    return std::string(reinterpret_cast<const char*>(data.GetData()), data.GetLength());
}

inline std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void WriteFile(const std::string& path, const std::string& content) {
    std::ofstream out(path, std::ios::binary);
    out << content;
}

inline std::string TempPath(const char* name) {
    return std::string(::testing::TempDir()) + "qzxml_writers_" + name;
}

// Restores the direct file switch whatever a test does.
struct AsyncGuard {
    explicit AsyncGuard(bool on) { AsyncToXmlFile(on); }
    ~AsyncGuard() { AsyncToXmlFile(false); }
};

} // namespace QzXmlTest

#endif
