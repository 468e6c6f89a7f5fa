#pragma once

#include <QTest>

// Qt gives up after five seconds. That is a test of the machine's speed where a sanitizer, an X server or
// other tests take most of it; whoever waits in vain, waits in a test that fails anyway.

#undef QTRY_VERIFY
#define QTRY_VERIFY(expr) QTRY_VERIFY_WITH_TIMEOUT((expr), 60000)

#undef QTRY_COMPARE
#define QTRY_COMPARE(expr, expected) QTRY_COMPARE_WITH_TIMEOUT((expr), expected, 60000)
