#include "lingobject/member_name.h"

#include "bridge/convert.h"

#include <array>
#include <string_view>

namespace ling::python {

namespace {

using ling::internal::identifier_data;

/// Remembers the identifiers of recent names: as many as a program's hot attributes, found by address. An entry keeps
/// its string alive, so that no other can come to stand at its address. Under the interpreter lock.
class NameCache {
public:
    const identifier_data* find(PyObject* name) const noexcept {
        const Entry& entry = entries_[slotOf(name)];
        return entry.name == name ? entry.identifier : nullptr;
    }
    void remember(PyObject* name, const identifier_data* identifier) {
        Entry& entry = entries_[slotOf(name)];
        PyObject* replaced = entry.name;
        entry = {Py_NewRef(name), identifier};
        Py_XDECREF(replaced);  // A string: its end runs no code.
    }

private:
    struct Entry {
        PyObject* name = nullptr;
        const identifier_data* identifier = nullptr;
    };
    static constexpr std::size_t kSlots = 1024;
    static std::size_t slotOf(PyObject* name) noexcept {
        const auto address = reinterpret_cast<std::uintptr_t>(name);
        return ((address >> 4) ^ (address >> 14)) % kSlots;
    }

    std::array<Entry, kSlots> entries_{};
};

constinit NameCache cache;

}  // namespace

namespace {

/// No text, with the Python error set, for a name that is none or cannot be encoded.
std::optional<std::string_view> textOf(PyObject* name) {
    if (!isText(name))
        return std::nullopt;
    Py_ssize_t size = 0;
    const char* utf8 = PyUnicode_AsUTF8AndSize(name, &size);
    return utf8 == nullptr ? std::nullopt : std::optional(std::string_view(utf8, static_cast<std::size_t>(size)));
}

const identifier_data* remembered(PyObject* name, const identifier_data* identifier) {
    if (identifier != nullptr && PyUnicode_CHECK_INTERNED(name) != 0 && PyUnicode_CheckExact(name))
        cache.remember(name, identifier);
    return identifier;
}

}  // namespace

const identifier_data* knownPublicName(PyObject* name) noexcept {
    const identifier_data* known = cache.find(name);
    return known != nullptr && !known->isPrivate ? known : nullptr;
}

const identifier_data* memberName(PyObject* name) {
    if (const identifier_data* known = cache.find(name))
        return known;
    const std::optional<std::string_view> text = textOf(name);
    return text ? remembered(name, &ling::internal::intern(*text)) : nullptr;
}

LookupName::LookupName(PyObject* name) : data_(cache.find(name)) {
    if (data_ != nullptr)
        return;
    const std::optional<std::string_view> text = textOf(name);
    if (!text)
        return;
    data_ = remembered(name, ling::internal::find_interned(*text));
    if (data_ == nullptr)
        data_ = unknown_.emplace(*text).property().data();
}

bool isText(PyObject* name) noexcept {
    if (PyUnicode_Check(name))
        return true;
    PyErr_Format(PyExc_TypeError, "attribute name must be string, not '%.200s'", Py_TYPE(name)->tp_name);
    return false;
}

bool isPrivateName(PyObject* name) noexcept {
    return PyUnicode_Check(name) && PyUnicode_GET_LENGTH(name) > 0 && PyUnicode_READ_CHAR(name, 0) == '_';
}

}  // namespace ling::python
