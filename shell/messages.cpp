#include "messages.h"

#include "ling/class.h"
#include "ling/error.h"

#include <cstdio>
#include <string>

namespace ling::shell {

namespace {

void writeLine(std::string line) {
    line += '\n';
    (void)std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace

void tell(std::string_view text) { writeLine("lingsh: " + std::string(text)); }

void tellError(const Any& error) {
    const Result<Error> known = Error::cast(error);
    std::string text = known ? known->message().toStdString() : std::string();
    while (text.ends_with('\n'))
        text.pop_back();
    writeLine(text.empty() ? qualname(error).toStdString() : text);
}

}  // namespace ling::shell
