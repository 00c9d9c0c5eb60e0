#include "ling/object_value.h"

#include "ling/class_record.h"
#include "ling/error.h"
#include "values/extras.h"

#include <new>
#include <utility>

namespace ling::internal {

namespace {

/// How many objects one thread made more than it took apart, which may be fewer than none. Only that thread writes it,
/// so that threads which make objects at the same time do not meet. Another thread takes it over when it has ended.
struct alignas(64) live_count {
    std::atomic<std::ptrdiff_t> objects{0};
    std::atomic<bool> isTaken{true};
    live_count* next = nullptr;
};

std::atomic<live_count*> liveCounts{nullptr};
/// Of threads that have no count: those that are about to end, and where there is no memory for one.
std::atomic<std::ptrdiff_t> otherObjects{0};

/// Objects whose last reference went while another object was being taken apart this deep on the same thread wait
/// in a chain, so that a list nested a million deep does not need a million stack frames. The links are in the dead
/// objects: where memory is given back, none may be asked for.
constexpr int kDeepestDeath = 48;

/// What a thread needs to make objects and take them apart. Without a destructor: values in statics may die after a
/// thread's locals are gone.
struct object_life {
    live_count* live;
    bool isEnding;
    int deaths;
    object_value* firstDead;
};
constinit thread_local object_life life LING_STATIC_TLS{};

/// Gives the count of the thread back.
struct count_return {
    void expect() const noexcept {}
    ~count_return() {
        life.isEnding = true;
        if (live_count* count = std::exchange(life.live, nullptr))
            count->isTaken.store(false, std::memory_order_release);
    }
};
thread_local count_return countReturn;

live_count* takeLiveCount() noexcept {
    for (live_count* count = liveCounts.load(std::memory_order_acquire); count != nullptr; count = count->next)
        if (!count->isTaken.load(std::memory_order_relaxed) &&
            !count->isTaken.exchange(true, std::memory_order_acquire))
            return count;
    auto* made = new (std::nothrow) live_count;
    if (made == nullptr)
        return nullptr;
    made->next = liveCounts.load(std::memory_order_relaxed);
    while (!liveCounts.compare_exchange_weak(made->next, made, std::memory_order_release, std::memory_order_relaxed)) {
    }
    return made;
}

void countElsewhere(std::ptrdiff_t change) noexcept {
    if (!life.isEnding && (life.live = takeLiveCount()) != nullptr) {
        countReturn.expect();
        life.live->objects.fetch_add(change, std::memory_order_relaxed);
    } else {
        otherObjects.fetch_add(change, std::memory_order_relaxed);
    }
}

void countObject(std::ptrdiff_t change) noexcept {
    if (live_count* own = life.live)
        own->objects.store(own->objects.load(std::memory_order_relaxed) + change, std::memory_order_relaxed);
    else
        countElsewhere(change);
}

}  // namespace

object_extras::~object_extras() {
    delete ownMembers.load(std::memory_order_relaxed);
    if (weak_anchor* held = anchor.load(std::memory_order_relaxed))
        held->release();
}

object_value::object_value(Kind kind, object_value_class* klass) noexcept : kind_(kind), class_(klass) {
    countObject(1);
    if (class_ != nullptr)
        class_->retain();
}

object_value::~object_value() {
    delete extras_.load(std::memory_order_relaxed);
    if (class_ != nullptr)
        class_->release();
    countObject(-1);
}

bool object_value::retainIfAlive() noexcept {
    std::uint32_t count = count_.load(std::memory_order_relaxed);
    if (count >= kPinned)
        return true;
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

/// Who has the only reference need not count it down, unless a weak one leads here as well.
void object_value::releaseOnlyReference() noexcept {
    if (isUnshared() || count_.fetch_sub(1, std::memory_order_release) == 1)
        destroy();
}

void object_value::destroy() noexcept {
    // Pairs with the releases of all other owners: what they wrote to the object is seen here.
    (void)count_.load(std::memory_order_acquire);
    object_life& own = life;
    if (own.deaths >= kDeepestDeath) {
        waitBefore(std::exchange(own.firstDead, this));
        return;
    }
    ++own.deaths;
    dismantle();
    while (own.deaths == 1 && own.firstDead != nullptr) {
        object_value* next = own.firstDead;
        own.firstDead = next->takeNext();
        next->dismantle();
    }
    --own.deaths;
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
    std::ptrdiff_t objects = otherObjects.load(std::memory_order_relaxed);
    for (const live_count* count = liveCounts.load(std::memory_order_acquire); count != nullptr; count = count->next)
        objects += count->objects.load(std::memory_order_relaxed);
    return static_cast<std::size_t>(objects);
}

}  // namespace ling::internal
