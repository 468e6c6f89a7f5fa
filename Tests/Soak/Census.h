#pragma once

#include <cstdio>

class Beacon;

/// What there is in the process, after Python's garbage was collected.
struct Census
{
    static Census take(const Beacon &beacon);

    static void printHeader(FILE *stream);
    void print(FILE *stream, int rescans) const;

    long residentKilobytes;
    long heapKilobytes; ///< in use, of the C library's
    int widgets;
    int modules; ///< in sys.modules
    int moduleObjects;
    int connections; ///< to the long-lived object
    int descriptors;
};
