// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <clocale>
#include <cstdlib>
#include <locale>
#include <string>

/** Makes a locale with a decimal comma and grouped digits the one of this process, for the C library and for C++ streams,
    as a host may have done, and puts the former ones back. The build makes the locale, in its own folder. */
class CommaLocale
{
public:
    CommaLocale() : formerC (std::setlocale (LC_ALL, nullptr))
    {
        ::setenv ("LOCPATH", KESTRIN_TEST_LOCALES, 1);
        std::locale::global (std::locale (name));
        std::setlocale (LC_ALL, name);
    }

    ~CommaLocale()
    {
        std::locale::global (formerCpp);
        std::setlocale (LC_ALL, formerC.c_str());
        ::unsetenv ("LOCPATH");
    }

    CommaLocale (const CommaLocale&) = delete;
    CommaLocale& operator= (const CommaLocale&) = delete;

private:
    static constexpr const char* name = "de_DE.UTF-8";

    std::locale formerCpp;
    std::string formerC;
};
