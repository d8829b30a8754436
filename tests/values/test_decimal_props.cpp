// CDecimal against exact arithmetic on scaled __int128 values: seeded random decimals
// whose sums, differences and products need no more than 30 places.
#include "values/Decimal.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

using namespace QzXmlLib16;

namespace {

typedef __int128 Int128;

// An exact decimal: units / 10^scale.
struct Scaled {
    Int128 units;
    int scale;
};

Int128 Power10(int n) {
    Int128 p = 1;
    while (n-- > 0) {
        p *= 10;
    }
    return p;
}

// Shortest text: no trailing zeros in the fraction, no "." for whole numbers, "0" for zero.
std::string ToText(Scaled value) {
    while (value.scale > 0 && value.units % 10 == 0) {
        value.units /= 10;
        --value.scale;
    }
    bool negative = value.units < 0;
    unsigned __int128 magnitude = negative ? -static_cast<unsigned __int128>(value.units) : value.units;
    std::string digits;
    do {
        digits.insert(digits.begin(), static_cast<char>('0' + static_cast<int>(magnitude % 10)));
        magnitude /= 10;
    } while (magnitude != 0);
    if (value.scale > 0) {
        if (static_cast<int>(digits.size()) <= value.scale) {
            digits.insert(0, static_cast<size_t>(value.scale + 1) - digits.size(), '0');
        }
        digits.insert(digits.size() - static_cast<size_t>(value.scale), ".");
    }
    return negative && value.units != 0 ? "-" + digits : digits;
}

// Up to integerDigits digits before the point and up to maxScale after it, sign random;
// the text keeps any trailing zeros of the fraction to exercise the reader.
Scaled RandomScaled(std::mt19937_64& rng, int integerDigits, int maxScale, std::string& text) {
    std::uniform_int_distribution<int> digit(0, 9);
    int intCount = std::uniform_int_distribution<int>(0, integerDigits)(rng);
    int scale = std::uniform_int_distribution<int>(0, maxScale)(rng);
    Int128 units = 0;
    std::string body;
    for (int i = 0; i < intCount; ++i) {
        int d = digit(rng);
        units = units * 10 + d;
        body.push_back(static_cast<char>('0' + d));
    }
    if (scale > 0) {
        body.push_back('.');
        for (int i = 0; i < scale; ++i) {
            int d = digit(rng);
            units = units * 10 + d;
            body.push_back(static_cast<char>('0' + d));
        }
    }
    bool negative = (rng() & 1) != 0 && units != 0;
    text = (negative ? "-" : "") + body;
    return Scaled{negative ? -units : units, scale};
}

Scaled Rescale(Scaled v, int scale) {
    return Scaled{v.units * Power10(scale - v.scale), scale};
}

const int kCases = 3000;

} // namespace

TEST(CDecimalPropertyTest, ParseAndPrintMatchExactValues) {
    std::mt19937_64 rng(1234);
    for (int i = 0; i < kCases; ++i) {
        std::string text;
        Scaled v = RandomScaled(rng, 8, 30, text);
        SCOPED_TRACE(text);
        ASSERT_EQ(ToText(v), CDecimal(text.c_str()).ToString());
    }
}

TEST(CDecimalPropertyTest, SumsAndDifferencesMatchExactArithmetic) {
    std::mt19937_64 rng(5678);
    for (int i = 0; i < kCases; ++i) {
        std::string ta;
        std::string tb;
        Scaled a = RandomScaled(rng, 18, 18, ta);
        Scaled b = (i % 11 == 0) ? a : RandomScaled(rng, 18, 18, tb);
        if (i % 11 == 0) {
            tb = ta;
        }
        SCOPED_TRACE(ta + " , " + tb);
        int scale = std::max(a.scale, b.scale);
        Scaled x = Rescale(a, scale);
        Scaled y = Rescale(b, scale);
        CDecimal da(ta.c_str());
        CDecimal db(tb.c_str());
        ASSERT_EQ(ToText(Scaled{x.units + y.units, scale}), (da + db).ToString());
        ASSERT_EQ(ToText(Scaled{x.units - y.units, scale}), (da - db).ToString());
        ASSERT_EQ(x.units < y.units, da < db);
        ASSERT_EQ(x.units > y.units, da > db);
        ASSERT_EQ(x.units <= y.units, da <= db);
        ASSERT_EQ(x.units >= y.units, da >= db);
        ASSERT_EQ(x.units == y.units, da == db);
    }
}

TEST(CDecimalPropertyTest, ProductsMatchExactArithmetic) {
    std::mt19937_64 rng(91011);
    for (int i = 0; i < kCases; ++i) {
        std::string ta;
        std::string tb;
        // At most 15 places each, so the exact product needs at most 30; at most 18
        // digits each, so it fits in 128 bits.
        Scaled a = RandomScaled(rng, 3, 15, ta);
        Scaled b = RandomScaled(rng, 3, 15, tb);
        SCOPED_TRACE(ta + " * " + tb);
        Scaled product{a.units * b.units, a.scale + b.scale};
        ASSERT_EQ(ToText(product), (CDecimal(ta.c_str()) * CDecimal(tb.c_str())).ToString());
    }
}

// Quotients that end within 30 places come out exact: (a * b) / b gives a back.
TEST(CDecimalPropertyTest, ExactQuotientsReturnTheDividend) {
    std::mt19937_64 rng(1213);
    for (int i = 0; i < 500; ++i) {
        std::string ta;
        std::string tb;
        Scaled a = RandomScaled(rng, 8, 10, ta);
        Scaled b = RandomScaled(rng, 8, 10, tb);
        if (b.units == 0) {
            continue;
        }
        SCOPED_TRACE(ta + " , " + tb);
        CDecimal da(ta.c_str());
        CDecimal db(tb.c_str());
        ASSERT_EQ(ToText(a), ((da * db) / db).ToString());
    }
}
