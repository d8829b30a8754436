// The class constants of CBigInteger read from another file's static initialisers:
// they must be built before any translation unit that includes the header runs its own.
#include "values/BigInteger.h"
#include "values/Decimal.h"

#include <gtest/gtest.h>

#include <string>

using namespace QzXmlLib16;

namespace {

// Both run during static initialisation of this file, before main.
const std::string g_maxLongText = CBigInteger::MAX_LONG.ToString();
const bool g_doubleBoundIsAboveLongLong = CBigInteger::MAX_DOUBLE > CBigInteger::MAX_LONGLONG;
const std::string g_minLongLongText = (CBigInteger::MIN_LONGLONG - CBigInteger(1)).ToString();

} // namespace

TEST(CBigIntegerStaticTest, ConstantsAreReadyForOtherStaticInitialisers) {
    EXPECT_EQ("2147483647", g_maxLongText);
    EXPECT_TRUE(g_doubleBoundIsAboveLongLong);
    EXPECT_EQ("-9223372036854775809", g_minLongLongText);
}
