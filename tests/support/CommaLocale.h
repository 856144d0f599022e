// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <clocale>
#include <cstdlib>
#include <locale>
#include <string>

/** Gives the process a decimal comma and grouped digits while it lives, in the C library and in C++ streams, as a host may
    do. The build makes the C library's locale in a folder of its own. */
class CommaLocale
{
public:
    CommaLocale() : formerC (std::setlocale (LC_ALL, nullptr))
    {
        ::setenv ("LOCPATH", KESTRIN_TEST_LOCALES, 1);
        std::setlocale (LC_ALL, "de_DE.UTF-8");
        ::unsetenv ("LOCPATH");

        // Not by name: the C library's newlocale never frees its copy of LOCPATH.
        std::locale::global (std::locale (std::locale::classic(), new Punctuation));
    }

    ~CommaLocale()
    {
        std::locale::global (formerCpp);
        std::setlocale (LC_ALL, formerC.c_str());
    }

    CommaLocale (const CommaLocale&) = delete;
    CommaLocale& operator= (const CommaLocale&) = delete;

private:
    struct Punctuation : std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };

    std::locale formerCpp;
    std::string formerC;
};
