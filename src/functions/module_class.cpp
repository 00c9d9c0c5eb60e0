#include "functions/module_class.h"

#include "bridge/convert.h"
#include "host/error_scope.h"
#include "host/gil_guard.h"
#include "host/names.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "ling/error.h"
#include "ling/property.h"

#include <optional>
#include <utility>
#include <vector>

namespace ling::python {

namespace {

using ling::internal::object_value_class;

/// What a member of a module is in the host: a class or something to call. None for all others and for what does not
/// convert.
ling::Any exportedMember(PyObject* value) {
    if (!PyType_Check(value) && PyCallable_Check(value) == 0)
        return {};
    ling::Any member = toLing(value);
    forgetError();
    return ling::internal::is_error_result(member) ? ling::Any() : member;
}

struct Member {
    ling::property_ident_untyped id;
    ling::Property property;
};

/// Nothing for what is not shown.
std::optional<Member> memberFrom(PyObject* key, PyObject* value) {
    if (!PyUnicode_Check(key))
        return std::nullopt;
    const ling::Result<ling::String> name = ling::String::cast(toLing(key));
    forgetError();
    if (!name || !isPublicName(*name))
        return std::nullopt;
    const ling::Any member = exportedMember(value);
    if (member.isNone())
        return std::nullopt;
    ling::internal::property_builder_base property;
    property.assign_getter_value(member);
    return Member{ling::property_ident_untyped(*name), property.build()};
}

/// Walks a copy: converting a member can run code that changes the module.
std::vector<Member> membersOf(PyObject* module) {
    std::vector<Member> all;
    PyRef members = PyRef::steal(PyModule_Check(module) ? PyDict_Copy(PyModule_GetDict(module)) : nullptr);
    PyObject* key = nullptr;
    PyObject* value = nullptr;
    Py_ssize_t position = 0;
    while (members && PyDict_Next(members.get(), &position, &key, &value) != 0)
        if (std::optional<Member> member = memberFrom(key, value))
            all.push_back(*std::move(member));
    return all;
}

/// The documentation where it is a text, else an empty one.
ling::String docOf(PyObject* module) {
    PyRef doc = PyRef::steal(attribute(module, names::doc));
    const ling::Any text = doc && PyUnicode_Check(doc.get()) ? toLing(doc.get()) : ling::Any();
    forgetError();
    return ling::String::cast(text).valueOr(ling::String());
}

}  // namespace

bool isPublicName(const ling::String& name) { return !name.isEmpty() && !name.startsWith(u"_"); }

void reportNotExported(const ling::String& pythonName, const ling::Any& error) {
    const ling::Result<ling::Error> known = ling::Error::cast(error);
    platform::report(ling::String(u"Unable to export the Python module {}: {}")
                         .arg(pythonName, known ? known->message() : ling::String()));
}

ModuleClass::ModuleClass(const ling::String& name, const ling::Class_Generic& parent, ling::String pythonName)
    : object_value_class(name), pythonName_(std::move(pythonName)) {
    (void)add_parent_unsafe(parent);
    expect_members_unsafe();
}

ModuleClass::~ModuleClass() {
    if (const GilGuard gil = GilGuard::ifAlive()) {
        const ErrorScope pending;
        Py_XDECREF(module_.load(std::memory_order_relaxed));
    }
}

ling::Class_Generic ModuleClass::make(const ling::String& name, const ling::Class_Generic& parent, PyObject* module) {
    auto* record = new ModuleClass(name, parent, ling::String());
    ling::Class_Generic cls = ling::Class_Generic::adopt(record);
    record->module_.store(Py_NewRef(module), std::memory_order_release);
    (void)record->ensureMembers();
    return cls;
}

ling::Class_Generic ModuleClass::makeLate(const ling::String& name, const ling::Class_Generic& parent,
                                          const ling::String& pythonName) {
    return ling::Class_Generic::adopt(new ModuleClass(name, parent, pythonName));
}

PyObject* ModuleClass::module() {
    (void)ensureMembers();
    return module_.load(std::memory_order_acquire);
}

namespace {

/// The classes whose members this thread is fetching, innermost first: what the fetch runs may look into them.
struct Fetch {
    const ModuleClass* cls;
    const Fetch* outer;
};
thread_local const Fetch* innermostFetch = nullptr;

class FetchScope {
public:
    explicit FetchScope(const ModuleClass* cls) : own_{cls, innermostFetch} { innermostFetch = &own_; }
    FetchScope(const FetchScope&) = delete;
    FetchScope& operator=(const FetchScope&) = delete;
    ~FetchScope() { innermostFetch = own_.outer; }

    static bool includes(const ModuleClass* cls) noexcept {
        const Fetch* fetch = innermostFetch;
        while (fetch != nullptr && fetch->cls != cls)
            fetch = fetch->outer;
        return fetch != nullptr;
    }

private:
    const Fetch own_;
};

}  // namespace

/// Whoever looks may have a Python error pending, which is no business of the import's.
bool ModuleClass::declareMembers() {
    const GilGuard gil = GilGuard::ifAlive();
    if (!gil || FetchScope::includes(this))
        return false;
    const FetchScope fetching(this);
    const ErrorScope pending;
    PyObject* module = import();
    if (module == nullptr)
        return false;
    const ling::String doc = docOf(module);
    const std::vector<Member> members = membersOf(module);
    // The interpreter lock is not given up from here on: one thread publishes, all others find that it has.
    if (std::exchange(isPublished_, true))
        return true;
    set_doc_unsafe(doc);
    for (const Member& member : members)
        add_class_property_unsafe(member.id, this, member.property);
    return true;
}

/// The module, borrowed, or null when it cannot be had.
PyObject* ModuleClass::import() {
    if (PyObject* present = module_.load(std::memory_order_acquire))
        return present;
    PyRef name = PyRef::steal(toPython(pythonName_));
    PyRef imported = name ? PyRef::steal(PyImport_Import(name.get())) : PyRef();
    if (!imported) {
        reportNotExported(pythonName_, takePythonError());
        return nullptr;
    }
    PyObject* present = nullptr;  // Another thread may have been faster.
    return module_.compare_exchange_strong(present, imported.get(), std::memory_order_acq_rel) ? imported.release()
                                                                                               : present;
}

}  // namespace ling::python
