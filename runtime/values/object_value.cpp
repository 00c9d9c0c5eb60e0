#include "ling/object_value.h"

#include "ling/class_record.h"
#include "ling/error.h"
#include "values/extras.h"

#include <utility>

namespace ling::internal {

namespace {

/// How many objects are alive, in parts: threads count in parts of their own, as far as there are enough of them, so
/// that those who make objects at the same time do not wait for each other. One part alone may fall below zero.
struct alignas(64) live_count {
    std::atomic<std::ptrdiff_t> objects{0};
};
constexpr std::size_t kLiveCounts = 32;
live_count liveCounts[kLiveCounts];

std::atomic<std::ptrdiff_t>& liveObjects() noexcept {
    static std::atomic<std::size_t> threads{0};
    thread_local const std::size_t own = threads.fetch_add(1, std::memory_order_relaxed) % kLiveCounts;
    return liveCounts[own].objects;
}

/// Objects whose last reference went while another object was being taken apart this deep on the same thread wait
/// in a chain, so that a list nested a million deep does not need a million stack frames. The links are in the dead
/// objects: where memory is given back, none may be asked for.
struct deferred_deaths {
    static constexpr int kDeepest = 48;
    int depth;
    object_value* first;
};

// Without a destructor: values in statics may die after a thread's locals are gone.
thread_local deferred_deaths deferredDeaths{0, nullptr};

}  // namespace

object_extras::~object_extras() {
    delete ownMembers.load(std::memory_order_relaxed);
    if (weak_anchor* held = anchor.load(std::memory_order_relaxed))
        held->release();
}

object_value::object_value(Kind kind, object_value_class* klass) noexcept : kind_(kind), class_(klass) {
    liveObjects().fetch_add(1, std::memory_order_relaxed);
    if (class_ != nullptr)
        class_->retain();
}

object_value::~object_value() {
    delete extras_.load(std::memory_order_relaxed);
    if (class_ != nullptr)
        class_->release();
    liveObjects().fetch_sub(1, std::memory_order_relaxed);
}

bool object_value::retainIfAlive() noexcept {
    std::uint32_t count = count_.load(std::memory_order_relaxed);
    while (count != 0)
        if (count_.compare_exchange_weak(count, count + 1, std::memory_order_relaxed))
            return true;
    return false;
}

object_extras& object_value::ensureExtras() {
    if (object_extras* present = findExtras())
        return *present;
    return *publish(extras_, new object_extras, [](object_extras* late) { delete late; });
}

Any object_value::lock() { return Any::share(this); }

Any object_value::invoke(std::span<const Any>) {
    return failure(String(u"The value is not callable: {}.").arg(Any::share(this)));
}

void object_value::destroy() noexcept {
    // Pairs with the releases of all other owners: what they wrote to the object is seen here.
    (void)count_.load(std::memory_order_acquire);
    deferred_deaths& deaths = deferredDeaths;
    if (deaths.depth >= deferred_deaths::kDeepest) {
        waitBefore(std::exchange(deaths.first, this));
        return;
    }
    ++deaths.depth;
    dismantle();
    while (deaths.depth == 1 && deaths.first != nullptr) {
        object_value* next = deaths.first;
        deaths.first = next->takeNext();
        next->dismantle();
    }
    --deaths.depth;
}

namespace {

/// Marks a link that stands in the place of the extras.
constexpr std::uintptr_t kLink = 1;

}  // namespace

/// Nobody else knows a dead object, so that the link to the next one may take the place of extras that were never made.
void object_value::waitBefore(object_value* next) noexcept {
    if (object_extras* extras = findExtras())
        extras->nextDead = next;
    else
        extras_.store(reinterpret_cast<object_extras*>(reinterpret_cast<std::uintptr_t>(next) | kLink),
                      std::memory_order_relaxed);
}

object_value* object_value::takeNext() noexcept {
    object_extras* const present = extras_.load(std::memory_order_relaxed);
    const auto bits = reinterpret_cast<std::uintptr_t>(present);
    if ((bits & kLink) == 0)
        return present->nextDead;
    extras_.store(nullptr, std::memory_order_relaxed);
    return reinterpret_cast<object_value*>(bits & ~kLink);
}

void object_value::dismantle() noexcept {
    dying_ = true;  // A weak reference that the finaliser makes is one to an object that is gone.
    if (object_extras* extras = findExtras())
        if (weak_anchor* anchor = extras->anchor.load(std::memory_order_acquire))
            anchor->detach();
    // The object is whole while its class's finaliser looks at it, so it needs a reference to hand out; one that the
    // finaliser keeps would outlive the object and is the finaliser's error.
    count_.store(1, std::memory_order_relaxed);
    aboutToDie();
    delete this;
}

std::size_t live_object_count() noexcept {
    std::ptrdiff_t objects = 0;
    for (const live_count& count : liveCounts)
        objects += count.objects.load(std::memory_order_relaxed);
    return static_cast<std::size_t>(objects);
}

}  // namespace ling::internal
