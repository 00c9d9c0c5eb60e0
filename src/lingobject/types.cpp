#include "lingobject/types.h"

#include "bridge/contained.h"
#include "ling/comparison.h"
#include "ling/error.h"
#include "ling/indirect_values.h"
#include "ling/iterable.h"
#include "ling/module.h"
#include "lingobject/attributes.h"
#include "lingobject/call.h"
#include "lingobject/class_tables.h"
#include "lingobject/guarded_slot.h"
#include "lingobject/instance.h"
#include "lingobject/operators.h"
#include "lingobject/protocols.h"
#include "lingobject/type_members.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <string>
#include <unordered_map>

namespace ling::python {

constexpr char kFamilyName[] = ">LingObject";

namespace {

constexpr char kFamilyDoc[] = "Wrapper around of a Ling object";

/// A type with the slots that every type of the family has. Zero-filled, referenced twice: it is never freed.
PyTypeObject* makeType(const char* name, const char* doc) {
    auto* type = static_cast<PyTypeObject*>(std::calloc(1, sizeof(PyTypeObject)));
    if (type == nullptr)
        return nullptr;
    Py_SET_REFCNT(reinterpret_cast<PyObject*>(type), 1);
    Py_INCREF(type);
    type->tp_name = name;
    type->tp_doc = doc;
    type->tp_basicsize = sizeof(Instance);
    type->tp_flags = Py_TPFLAGS_DEFAULT;
    type->tp_dealloc = deallocate;
    type->tp_repr = contained<representation>;
    type->tp_as_sequence = sequenceTable();
    type->tp_as_mapping = mappingTable();
    type->tp_hash = contained<hash>;
    type->tp_str = contained<text>;
    type->tp_getattro = guarded<lookUpAttribute>;
    type->tp_setattro = guarded<assignAttribute>;
    type->tp_richcompare = contained<compare>;
    type->tp_iter = guarded<iterate>;
    type->tp_iternext = guarded<nextItem>;
    return type;
}

PyTypeObject* makeReady(PyTypeObject* type) {
    return type != nullptr && PyType_Ready(type) == 0 && addDocumentation(type) ? type : nullptr;
}

PyTypeObject* makePlainType() {
    PyTypeObject* type = makeType(kFamilyName, kFamilyDoc);
    if (type != nullptr)
        type->tp_as_number = numberTable();
    type = makeReady(type);
    return type != nullptr && addSharedMembers(type) ? type : nullptr;
}

PyTypeObject* makeCallableType() {
    PyTypeObject* type = makeType(kFamilyName, kFamilyDoc);
    if (type != nullptr) {
        type->tp_as_number = numberTable();
        type->tp_call = guarded<call>;
    }
    type = makeReady(type);
    return type != nullptr && addSharedMembers(type) ? type : nullptr;
}

/// Made on first need, under the interpreter lock, by steps that run no Python code and so do not give it up.
PyTypeObject* plainType() {
    static constinit PyTypeObject* type = nullptr;
    if (type == nullptr)
        type = makePlainType();
    return type;
}

PyTypeObject* callableType() {
    static constinit PyTypeObject* type = nullptr;
    if (type == nullptr)
        type = makeCallableType();
    return type;
}

/// "ling~" and the qualified name, full stops replaced: Python would split the name at them.
const char* makeTypeName(const ling::Class_Generic& cls) {
    std::string name = "ling~" + ling::qualname(cls).toStdString();
    for (char& character : name)
        if (character == '.')
            character = '`';
    return keepText(name);
}

/// What a per-class type is made of. Gathered before the cache is locked: asking a class for the signatures of its
/// methods may run any code.
struct ClassParts {
    const char* name;
    const char* doc;
    PyMethodDef* methods;
    PyGetSetDef* properties;
};

ClassParts gatherParts(const ling::Class_Generic& cls) {
    return {makeTypeName(cls), keepText(cls.doc().toStdString()), makeMethodTable(cls), makePropertyTable(cls)};
}

/// Runs no foreign code.
PyTypeObject* makeClassType(const ClassParts& parts) {
    PyTypeObject* base = callableType();
    PyTypeObject* type = base == nullptr ? nullptr : makeType(parts.name, parts.doc);
    if (type == nullptr)
        return nullptr;
    type->tp_base = base;
    type->tp_call = guarded<call>;
    type->tp_methods = parts.methods;
    type->tp_getset = parts.properties;
    return makeReady(type);
}

/// What is known of each class so far, the type chosen for it above all. One spin lock guards it. A thread that finds
/// it taken gives the interpreter lock up while it waits, since the holder may need that lock to go on.
class TypeCache {
public:
    const ClassFacts* find(const ling::internal::object_value_class* record) {
        const SpinGuard hold(lock_);
        auto found = facts_.find(record);
        return found == facts_.end() ? nullptr : found->second.get();
    }

    /// Makes the type unless another thread was faster; the lock is held meanwhile, so no class gets two.
    template <class Make>
    const ClassFacts* findOrMake(ling::internal::object_value_class* record, Make&& make) {
        const SpinGuard hold(lock_);
        if (auto found = facts_.find(record); found != facts_.end())
            return found->second.get();
        PyTypeObject* type = make();
        if (type == nullptr)
            return nullptr;
        const auto made = facts_.emplace(record, std::make_unique<ClassFacts>(record, type)).first;
        record->pin();  // The address of a class that is gone must not be taken for that of a new one.
        return made->second.get();
    }

private:
    class SpinGuard {
    public:
        explicit SpinGuard(std::atomic<bool>& lock) : lock_(lock) {
            while (lock_.exchange(true, std::memory_order_acquire)) {
                PyThreadState* state = PyEval_SaveThread();
                __builtin_ia32_pause();
                PyEval_RestoreThread(state);
            }
        }
        ~SpinGuard() { lock_.store(false, std::memory_order_release); }
        SpinGuard(const SpinGuard&) = delete;
        SpinGuard& operator=(const SpinGuard&) = delete;

    private:
        std::atomic<bool>& lock_;
    };

    std::atomic<bool> lock_{false};
    std::unordered_map<const ling::internal::object_value_class*, std::unique_ptr<ClassFacts>> facts_;
};

TypeCache& cache() {
    static TypeCache& types = *new TypeCache;
    return types;
}

/// Module classes always; otherwise classes that declare public methods or properties of their own.
bool selectsOwnType(const ling::Class_Generic& cls) {
    return cls.isAncestor(ling::Module::getClass()) || declaresPublicMembers(cls);
}

PyTypeObject* sharedType(const ling::Class_Generic& cls) {
    return cls.isAncestor(ling::I_Invokable_Generic::getClass()) ? callableType() : plainType();
}

const ClassFacts* makeFactsFor(const ling::Class_Generic& cls) {
    if (!selectsOwnType(cls))
        return cache().findOrMake(cls.record(), [&] { return sharedType(cls); });
    const ClassParts parts = gatherParts(cls);
    return cache().findOrMake(cls.record(), [&] { return makeClassType(parts); });
}

const ClassFacts* findFacts(ling::internal::object_value_class* record) {
    if (const ClassFacts* known = cache().find(record))
        return known;
    const ClassFacts* made = makeFactsFor(ling::Class_Generic::share(record));
    if (made == nullptr && PyErr_Occurred() == nullptr)
        PyErr_NoMemory();
    return made;
}

/// The facts asked for of late, by the addresses of their classes. Under the interpreter lock.
constinit std::array<const ClassFacts*, 256> recentFacts{};

}  // namespace

void ClassFacts::look() const {
    (void)record_->hooks();  // There is a shape once somebody has asked for them.
    const void* const shape = record_->shape();
    isError_ = record_->isAncestor(ling::Error::getClass().record());
    isPlainlyInvokable_ = !isError_ && record_->isAncestor(ling::I_Invokable_Generic::getClass().record());
    isIterator_ = record_->isAncestor(ling::I_Iterator_Generic::getClass().record());
    isPlain_ = !record_->methodProtocol() && !record_->propertyProtocol() &&
               record_ != ling::Class_Generic::getClass().record() &&
               !record_->isAncestor(ling::Lazy_Generic::getClass().record()) &&
               !record_->isAncestor(ling::Weak_Generic::getClass().record());
    shape_ = shape;
}

const ClassFacts* factsOf(ling::internal::object_value_class* record) {
    const ClassFacts*& recent = recentFacts[(reinterpret_cast<std::uintptr_t>(record) >> 4) % recentFacts.size()];
    if (recent == nullptr || recent->record() != record) {
        const ClassFacts* found = findFacts(record);
        if (found == nullptr)
            return nullptr;
        recent = found;
    }
    return recent;
}

PyTypeObject* typeForClass(const ling::Class_Generic& cls) {
    const ClassFacts* facts = factsOf(cls.record());
    return facts == nullptr ? nullptr : facts->type();
}

}  // namespace ling::python
