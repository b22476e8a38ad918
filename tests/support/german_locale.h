// A host in a country where 0.5 is written 0,5: the C library's locale, for a scope.
//
//     const GermanLocale german;
//     if (!german.IsThere()) GTEST_SKIP() << "neither the locale de_DE.UTF-8 nor localedef is installed";
//
// Where the machine does not have the locale, it is compiled once for the program, into a folder of its own.
// The locale belongs to the process: not while other threads need another one.
#pragma once

#include <string>

namespace sonorelle::test {

class GermanLocale {
public:
    GermanLocale();
    ~GermanLocale(); // the one before
    GermanLocale(const GermanLocale&) = delete;
    GermanLocale& operator=(const GermanLocale&) = delete;
    bool IsThere() const { return there; }

private:
    std::string before;
    bool there = false;
};

} // namespace sonorelle::test
