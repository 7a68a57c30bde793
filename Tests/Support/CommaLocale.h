#pragma once

#include <clocale>
#include <locale>
#include <string>

namespace quillmere::testing {

// While it lives, numbers of the process have decimal commas and grouped digits: always in C++ streams, and
// in C functions too where a locale of that kind is installed.
class CommaLocale {
public:
    CommaLocale() : c_(std::setlocale(LC_ALL, nullptr)) {
        std::locale::global(std::locale(std::locale::classic(), new Punctuation));
        for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "fr_FR.utf8"}) {
            if (std::setlocale(LC_NUMERIC, name) != nullptr) break;
        }
    }
    ~CommaLocale() {
        std::locale::global(cpp_);
        std::setlocale(LC_ALL, c_.c_str());
    }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

private:
    class Punctuation : public std::numpunct<char> {
    protected:
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };

    std::locale cpp_;  // the global one at construction
    std::string c_;
};

}  // namespace quillmere::testing
