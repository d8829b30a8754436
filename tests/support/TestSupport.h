// TestSupport.h - small helpers shared by the test programs.
#ifndef QZXML_TESTS_SUPPORT_TESTSUPPORT_H
#define QZXML_TESTS_SUPPORT_TESTSUPPORT_H

#include "foundation/Exceptions.h"
#include "tree/XmlElement.h"

#include <string>

namespace QzTest {

// The message of the exception of class E (any library exception by default) that `call`
// throws; "<no exception>" when it returns normally, and "<other exception class> " plus
// the message when it throws a library exception of another class.
template <class E = QzXmlLib16::CQzException, class F> std::string MessageOf(F call) {
    try {
        call();
    } catch (const E& e) {
        return e.GetMessage();
    } catch (...) {
        try {
            throw;
        } catch (const QzXmlLib16::CQzException& e) {
            return "<other exception class> " + e.GetMessage();
        } catch (...) {
            return "<foreign exception>";
        }
    }
    return "<no exception>";
}

// The child of `parent` at 0-based `index`, or null when there are fewer children.
inline QzXmlLib16::CXmlElement* Child(QzXmlLib16::CXmlElement* parent, int index) {
    QzXmlLib16::CXmlElement* child = parent->GetFirstElement();
    for (int i = 0; child && i < index; ++i)
        child = child->GetNextSiblingElement();
    return child;
}

} // namespace QzTest

#endif
