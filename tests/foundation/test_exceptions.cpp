// Exception family: message composition, chains, copying, cloning and the formatter; the two
// global helpers beside it, CInstanceMonitor and CQZCriticalSection.
#include "foundation/Exceptions.h"

#include "foundation/CriticalSection.h"
#include "foundation/InstanceMonitor.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cstdio>
#include <chrono>
#include <cwchar>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <typeinfo>

using namespace QzXmlLib16;

namespace {

TEST(ExceptionMessage, PathIsAppendedOnlyWhenNotEmpty) {
    CQzException plain("x", "");
    EXPECT_EQ("x", plain.GetMessage());
    EXPECT_EQ("", plain.GetPath());
    EXPECT_EQ(nullptr, plain.GetInnerException());

    CQzException withPath("Bad value", "/a/b[2]");
    EXPECT_EQ("Bad value\nPath: /a/b[2]", withPath.GetMessage());
    EXPECT_EQ("/a/b[2]", withPath.GetPath());

    CQzInvalidValueException e("v"); // a class without path forms
    EXPECT_EQ("v", e.GetMessage());
    EXPECT_EQ("", e.GetPath());
    CQzInvalidValueException withInner("w", CQzException("i"));
    EXPECT_EQ("w\ni", withInner.GetFullMessage());
}

TEST(ExceptionMessage, FullMessagePrintsTheChainOutermostFirst) {
    CQzException inner("b");
    CQzException outer("a", "/p", inner);
    EXPECT_EQ("a\nPath: /p\nb", outer.GetFullMessage());
    EXPECT_EQ("a\nPath: /p", outer.GetMessage());

    CQzInvalidValueException level3("c");
    CQzValidationException level2("b", "/x", level3);
    CQzException level1("a", level2);
    EXPECT_EQ("a\nb\nPath: /x\nc", level1.GetFullMessage());
}

TEST(ExceptionCopy, CloneKeepsDynamicClassAndIndependentInner) {
    std::unique_ptr<CQzException> clone;
    {
        CQzInvalidValueException source("outer", CQzInvalidStateException("cause"));
        try {
            throw source;
        } catch (CQzException& caught) {
            clone.reset(caught.Clone());
        }
        ASSERT_NE(nullptr, clone->GetInnerException());
        EXPECT_NE(source.GetInnerException(), clone->GetInnerException());
    }
    EXPECT_NE(nullptr, dynamic_cast<CQzInvalidValueException*>(clone.get()));
    EXPECT_NE(nullptr, dynamic_cast<CQzInvalidStateException*>(clone->GetInnerException()));
    EXPECT_EQ("outer\ncause", clone->GetFullMessage());
}

TEST(ExceptionCopy, EveryClassClonesToItself) {
    CQzException inner("i");
    CQzValidationException validation("m", "p", inner);
    CQzInvalidNamespaceException ns("m", "p", inner);
    CQzInvalidValueException value("m", inner);
    CQzInvalidStateException state("m", inner);
    CQzInvalidParamException param("m", inner);
    CQzOverFlowException overflow("m", inner);
    for (const CQzException* e :
         {static_cast<const CQzException*>(&validation), static_cast<const CQzException*>(&ns),
          static_cast<const CQzException*>(&value), static_cast<const CQzException*>(&state),
          static_cast<const CQzException*>(&param), static_cast<const CQzException*>(&overflow)}) {
        std::unique_ptr<CQzException> clone(e->Clone());
        EXPECT_EQ(typeid(*e), typeid(*clone));
        EXPECT_EQ(e->GetMessage(), clone->GetMessage());
        EXPECT_EQ("i", clone->GetInnerException()->GetMessage());
    }
    EXPECT_EQ("m\nPath: p", ns.GetMessage());
}

TEST(ExceptionCopy, ConvertingConstructorsKeepMessagePathAndInner) {
    CQzException source("m", "/r", CQzOverFlowException("o"));
    CQzInvalidParamException converted(source);
    EXPECT_EQ(source.GetMessage(), converted.GetMessage());
    EXPECT_EQ("/r", converted.GetPath());
    ASSERT_NE(nullptr, converted.GetInnerException());
    EXPECT_NE(nullptr, dynamic_cast<CQzOverFlowException*>(converted.GetInnerException()));
}

TEST(ExceptionCopy, AssignmentKeepsTargetPathAndLeavesOldInnerAlone) {
    CQzException target("old", "/old", CQzException("old inner"));
    CQzException* oldInner = target.GetInnerException();
    CQzException source("new", "/new", CQzException("new inner"));
    target = source;
    EXPECT_EQ("new\nPath: /new", target.GetMessage());
    EXPECT_EQ("/old", target.GetPath());
    ASSERT_NE(nullptr, target.GetInnerException());
    EXPECT_NE(source.GetInnerException(), target.GetInnerException());
    EXPECT_EQ("new inner", target.GetInnerException()->GetMessage());
    // The previous inner exception was not destroyed by the assignment.
    EXPECT_EQ("old inner", oldInner->GetMessage());
    delete oldInner;

    CQzException* secondInner = target.GetInnerException();
    CQzException empty;
    target = empty;
    EXPECT_EQ(nullptr, target.GetInnerException());
    delete secondInner;
}

TEST(FormatString, PlainConversions) {
    EXPECT_EQ("5%", FormatString("%d%%", 5));
    EXPECT_EQ("a-b", FormatString("%s-%s", "a", "b"));
    EXPECT_EQ("[  42]", FormatString("[%4d]", 42));
    EXPECT_EQ("ff FF 0x1f", FormatString("%x %X %#x", 255, 255, 31));
    EXPECT_EQ("-9223372036854775808",
              FormatString("%lld", static_cast<long long>(-9223372036854775807LL - 1)));
    EXPECT_EQ("18446744073709551615", FormatString("%llu", 18446744073709551615ULL));
    EXPECT_EQ("1.5 2.5e+00 0.1", FormatString("%.1f %.1e %g", 1.5, 2.5, 0.1));
    EXPECT_EQ("abc", FormatString("%.3s", "abcdef"));
    EXPECT_EQ("c", FormatString("%c", 'c'));
    EXPECT_EQ("", FormatString(""));
    EXPECT_EQ("12345678901", FormatString("%I64d", 12345678901LL));
    // glibc prints a null string as "(null)", six characters, the length the formatter reserves.
    const char* volatile nullText = nullptr;
    EXPECT_EQ("(null)", FormatString("%s", nullText));
}

TEST(FormatString, WidthsAndStarsAreNeverCut) {
    EXPECT_EQ(std::string(100, ' ') + "x", FormatString("%101s", "x"));
    EXPECT_EQ(std::string(97, ' ') + "123", FormatString("%*d", 100, 123));
    EXPECT_EQ("3.14159", FormatString("%.*f", 5, 3.14159265));
    const std::string longText(5000, 'q');
    EXPECT_EQ(longText + "|" + longText, FormatString("%s|%s", longText.c_str(), longText.c_str()));
}

TEST(FormatString, HugeFixedPointValueIsMeasuredExactly) {
    char expected[400];
    std::snprintf(expected, sizeof expected, "%f", 1e308);
    EXPECT_EQ(expected, FormatString("%f", 1e308));
    std::snprintf(expected, sizeof expected, "%.2f", -DBL_MAX);
    EXPECT_EQ(expected, FormatString("%.2f", -DBL_MAX));
}

TEST(FormatString, PercentNPrintsTheNumberAndStoresNothing) {
    int errorNumber = 13;
    EXPECT_EQ("Failed to read [a.xml] Error [13]",
              FormatString("Failed to read [%s] Error [%n]", "a.xml", errorNumber));
    EXPECT_EQ(13, errorNumber);
    EXPECT_EQ("x-2y", FormatString("x%ny", -2));
}

// "h" makes a string or character narrow and "l" wide; the capital letters alone are wide.
TEST(FormatString, NarrowAndWideStringModifiers) {
    EXPECT_EQ("a|b|c|d|e", FormatString("%hs|%hS|%S|%ls|%s", "a", "b", L"c", L"d", "e"));
    EXPECT_EQ("[xyz]", FormatString("[%hc%C%lc]", 'x', static_cast<wint_t>(L'y'), static_cast<wint_t>(L'z')));
    EXPECT_EQ("  ab|  cd", FormatString("%4hS|%4S", "ab", L"cd"));
}

// The measure does not size "%E" (nor a negative precision); the text still comes out whole,
// and the items behind it are read from the right arguments.
TEST(FormatString, UnmeasuredConversionsAreNotCut) {
    EXPECT_EQ("1.500000E+00 tail", FormatString("%E %s", 1.5, "tail"));
    char expected[64];
    std::snprintf(expected, sizeof expected, "%.3E|%d", -DBL_MAX, 7);
    EXPECT_EQ(expected, FormatString("%.3E|%d", -DBL_MAX, 7));
    // A precision the measure reads with a sign or blank reaches the formatter as that number.
    EXPECT_EQ("3|x", FormatString("%.-5d|%s", 3, "x"));
    EXPECT_EQ("007|y", FormatString("%.+3d|%s", 7, "y"));
}

// The monitor drops its name, also a null one; deleting through the base runs the derived
// destructor.
TEST(InstanceMonitor, NameIsIgnoredAndDestructorIsVirtual) {
    struct Counted : CInstanceMonitor {
        explicit Counted(int& alive) : CInstanceMonitor(nullptr), m_alive(alive) { ++m_alive; }
        ~Counted() override { --m_alive; }
        int& m_alive;
    };
    int alive = 0;
    CInstanceMonitor* object = new Counted(alive);
    EXPECT_EQ(1, alive);
    delete object;
    EXPECT_EQ(0, alive);
    CInstanceMonitor named("CSomething");
    (void)named;
}

// Runs job on its own thread and reports whether it finished within a few seconds; a job that
// blocks for ever is left behind rather than hanging the test program.
bool FinishesSoon(std::function<void()> job) {
    auto done = std::make_shared<std::promise<void>>();
    std::future<void> finished = done->get_future();
    std::thread([job, done] {
        job();
        done->set_value();
    }).detach();
    return finished.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
}

// Each lock has its own mutex: holding one does not block another, also not a copy of the held
// one, and a held lock does block a second thread until it is left.
TEST(CriticalSection, EachObjectHasItsOwnMutex) {
    static CQZCriticalSection first;
    static CQZCriticalSection second;
    first.Enter();
    EXPECT_TRUE(FinishesSoon([] {
        second.Enter();
        second.Leave();
    }));
    static CQZCriticalSection copy(first);
    EXPECT_TRUE(FinishesSoon([] {
        copy.Enter();
        copy.Leave();
    }));

    std::promise<void> entered;
    std::future<void> enteredFuture = entered.get_future();
    std::thread waiter([&entered] {
        first.Enter();
        entered.set_value();
        first.Leave();
    });
    EXPECT_EQ(std::future_status::timeout, enteredFuture.wait_for(std::chrono::milliseconds(50)));
    first.Leave();
    waiter.join();
    EXPECT_EQ(std::future_status::ready, enteredFuture.wait_for(std::chrono::seconds(0)));
}

} // namespace
