#include "messages.h"

#include "ling/class.h"
#include "ling/error.h"
#include "ling/property.h"

#include <cstdio>
#include <string>

namespace ling::shell {

namespace {

void writeLine(std::string line) {
    line += '\n';
    (void)std::fwrite(line.data(), 1, line.size(), stderr);
}

/// What the language that the error came from shows of it, or an empty text.
String tracebackOf(const Error& error) {
    const property_ident_untyped $$traceback("traceback");
    const Any origin = error.origin();
    return origin.isNone() ? String() : String::cast(origin.propertyValue($$traceback)).valueOr(String());
}

/// The traceback, or the message behind the class, which says nothing when it is the plain one.
std::string reasonOf(const Any& error) {
    const Result<Error> known = Error::cast(error);
    const String traceback = known ? tracebackOf(*known) : String();
    if (!traceback.isEmpty())
        return traceback.toStdString();
    const String message = known ? known->message() : String();
    if (message.isEmpty())
        return qualname(error).toStdString();
    const bool isPlain = raw_class_of(error) == Error::getClass();
    return (isPlain ? message : qualname(error) + String(u": ") + message).toStdString();
}

}  // namespace

void tell(std::string_view text) { writeLine("lingsh: " + std::string(text)); }

void tellError(const Any& error) {
    std::string text = reasonOf(error);
    while (text.ends_with('\n'))
        text.pop_back();
    writeLine(std::move(text));
}

}  // namespace ling::shell
