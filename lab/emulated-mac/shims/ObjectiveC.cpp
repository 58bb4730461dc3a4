#include "lab/emulated-mac/shims/ObjectiveC.h"

#include "lab/emulated-mac/shims/Fault.h"
#include "lab/emulated-mac/shims/Foundation.h"
#include "lab/emulated-mac/shims/Shims.h"

#include <cxxabi.h>
#include <unwind.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <span>
#include <typeinfo>
#include <unordered_map>
#include <vector>

extern "C" {
void objectiveCMessage();
void objectiveCMessageToSuper();

_Unwind_Reason_Code __gxx_personality_v0(int version, _Unwind_Action actions,
                                         _Unwind_Exception_Class exceptionClass,
                                         _Unwind_Exception* exception, _Unwind_Context* context);
}

// Finds the method with every argument register kept, and jumps there. A message to nil returns 0
// in every register of a result (objc-msg-arm64.s).
asm(R"(
.macro KEEP
    stp x29, x30, [sp, #-224]!
    mov x29, sp
    stp x0, x1, [sp, #16]
    stp x2, x3, [sp, #32]
    stp x4, x5, [sp, #48]
    stp x6, x7, [sp, #64]
    str x8, [sp, #80]
    stp q0, q1, [sp, #96]
    stp q2, q3, [sp, #128]
    stp q4, q5, [sp, #160]
    stp q6, q7, [sp, #192]
.endm
.macro RESTORE
    ldp x0, x1, [sp, #16]
    ldp x2, x3, [sp, #32]
    ldp x4, x5, [sp, #48]
    ldp x6, x7, [sp, #64]
    ldr x8, [sp, #80]
    ldp q0, q1, [sp, #96]
    ldp q2, q3, [sp, #128]
    ldp q4, q5, [sp, #160]
    ldp q6, q7, [sp, #192]
    ldp x29, x30, [sp], #224
.endm
.globl objectiveCMessage
objectiveCMessage:
    cbz x0, 1f
    KEEP
    bl objectiveCImplementation
    mov x16, x0
    RESTORE
    br x16
1:  mov x1, #0
    movi d0, #0
    movi d1, #0
    movi d2, #0
    movi d3, #0
    ret
.globl objectiveCMessageToSuper
objectiveCMessageToSuper:
    KEEP
    bl objectiveCSuperImplementation
    mov x16, x0
    RESTORE
    ldr x0, [x0]
    br x16
)");

namespace velmo {

namespace {

struct Association {
    bool isKept;
    Object* value;
};

struct Life {
    std::int64_t references = 1;
    bool isEnding = false;
    std::set<Object**> weakReferences;
    std::map<const void*, Association> associations;
};

/// The runtime's side tables. A single lock guards all of them; no function of the program is
/// called while it is held.
struct Tables {
    std::mutex mutex;
    std::unordered_map<const Object*, Life> objects;
    std::unordered_map<const Object*, std::int64_t> blocks;
    std::set<const Object*> immortals;
    std::span<const char> executable;        ///< where objects and blocks live for ever
    std::map<std::string, int> releasedLate; ///< outside every explicit pool, by class
};

/// Never destroyed: threads use them until the process ends.
Tables& tables() {
    static auto& made = *new Tables;
    return made;
}

// The classes of blocks. Only their addresses are looked at.
void* stackBlock[32];
void* globalBlock[32];
void* heapBlock[32];
void* emptyCache[2];

bool isBlock(const Object* object) {
    const void* const isa = object->isa;
    return isa == stackBlock || isa == globalBlock || isa == heapBlock;
}

Life& lifeOf(const Object* object) {
    const auto found = tables().objects.find(object);
    if (found == tables().objects.end())
        misuse("an object is used that is gone");
    return found->second;
}

bool livesForEver(const Object* object) {
    const auto* const address = reinterpret_cast<const char*>(object);
    const std::span<const char> executable = tables().executable;
    return (!std::less()(address, executable.data())
            && std::less()(address, executable.data() + executable.size()))
           || tables().immortals.contains(object);
}

/// Calls the class's own method of this name, if it has one.
void callOwn(const Class* isa, Selector selector, Object* object) {
    const MethodList* const methods = isa->facts().methods;
    if (methods == nullptr)
        return;
    for (const Method& each : *methods) {
        if (std::strcmp(each.name, selector) == 0)
            reinterpret_cast<void (*)(Object*, Selector)>(each.implementation)(object, selector);
    }
}

void construct(const Class* isa, Object* object) {
    if (isa->superclass != nullptr)
        construct(isa->superclass, object);
    callOwn(isa, ".cxx_construct", object);
}

/// Does what objc_destructInstance does: ends the instance variables, then the associations, then
/// the weak references to the object.
void destroy(Object* object, Selector /*dealloc*/) {
    for (const Class* isa = object->isa; isa != nullptr; isa = isa->superclass)
        callOwn(isa, ".cxx_destruct", object);
    std::map<const void*, Association> associations;
    {
        const std::lock_guard lock(tables().mutex);
        associations.swap(lifeOf(object).associations);
    }
    for (const auto& [key, association] : associations) {
        if (association.isKept)
            release(association.value);
    }
    {
        const std::lock_guard lock(tables().mutex);
        for (Object** const reference : lifeOf(object).weakReferences)
            *reference = nullptr;
        tables().objects.erase(object);
    }
    std::free(object);
}

Object* returnSelf(Object* self, Selector /*selector*/) {
    return self;
}

const MethodList* listOf(std::initializer_list<Method> methods) {
    void* const memory = std::malloc(sizeof(MethodList) + methods.size() * sizeof(Method));
    auto* const list = new (memory) MethodList{.entrySizeAndFlags = sizeof(Method),
                                               .count = static_cast<std::uint32_t>(methods.size())};
    std::memcpy(list + 1, methods.begin(), methods.size() * sizeof(Method));
    return list;
}

} // namespace

FrameworkClass::FrameworkClass(const char* name, Class* superclass, std::size_t size,
                               std::initializer_list<Method> methods,
                               std::initializer_list<Method> classMethods)
    : facts_{.instanceSize = static_cast<std::uint32_t>(size),
             .name = name,
             .methods = listOf(methods)},
      metaFacts_{.instanceSize = sizeof(Class), .name = name, .methods = listOf(classMethods)} {
    object.isa = &meta;
    object.superclass = superclass;
    object.bits = reinterpret_cast<std::uintptr_t>(&facts_);
    meta.isa = &nsObject.meta;
    meta.superclass = &nsObject.object;
    meta.bits = reinterpret_cast<std::uintptr_t>(&metaFacts_);
    makeImmortal(&object);
}

FrameworkClass nsObject("NSObject", nullptr, sizeof(Object),
                        {method<returnSelf>("init"), method<destroy>("dealloc")});

void makeImmortal(const Object* object) {
    tables().immortals.insert(object);
}

void keepObjectsIn(std::span<const char> executable) {
    tables().executable = executable;
}

Object* allocate(Class* isa) {
    auto* const object = static_cast<Object*>(std::calloc(1, isa->facts().instanceSize));
    object->isa = isa;
    {
        const std::lock_guard lock(tables().mutex);
        tables().objects[object] = {};
    }
    construct(isa, object);
    return object;
}

Object* retain(Object* object) {
    if (object == nullptr)
        return nullptr;
    if (isBlock(object))
        return reinterpret_cast<Object*>(copyBlock(reinterpret_cast<Block*>(object)));
    const std::lock_guard lock(tables().mutex);
    if (!livesForEver(object))
        ++lifeOf(object).references;
    return object;
}

void release(Object* object) {
    if (object == nullptr)
        return;
    if (isBlock(object)) {
        releaseBlock(reinterpret_cast<Block*>(object));
        return;
    }
    {
        const std::lock_guard lock(tables().mutex);
        if (livesForEver(object))
            return;
        Life& life = lifeOf(object);
        if (--life.references > 0 || life.isEnding)
            return;
        life.isEnding = true;
    }
    send<void>(object, "dealloc");
}

// libclosure's runtime.cpp: _Block_copy and _Block_release, and what the compiler calls for a
// block's captured objects, _Block_object_assign and _Block_object_dispose.

Block* copyBlock(Block* block) {
    if (block == nullptr || (block->flags & Block::isGlobal) != 0)
        return block;
    if ((block->flags & Block::needsFree) != 0) {
        const std::lock_guard lock(tables().mutex);
        const auto found = tables().blocks.find(reinterpret_cast<Object*>(block));
        if (found == tables().blocks.end())
            misuse("a block is copied that is gone");
        ++found->second;
        return block;
    }
    auto* const copy = static_cast<Block*>(std::malloc(block->descriptor->size));
    std::memcpy(static_cast<void*>(copy), block, block->descriptor->size);
    keepOnHeap(copy);
    if ((copy->flags & Block::hasCopyDispose) != 0)
        copy->descriptor->copy(copy, block);
    return copy;
}

void keepOnHeap(Block* block) {
    block->isa = heapBlock;
    block->flags |= Block::needsFree;
    const std::lock_guard lock(tables().mutex);
    tables().blocks[reinterpret_cast<Object*>(block)] = 1;
}

void releaseBlock(Block* block) {
    if (block == nullptr || (block->flags & Block::needsFree) == 0)
        return;
    {
        const std::lock_guard lock(tables().mutex);
        const auto found = tables().blocks.find(reinterpret_cast<Object*>(block));
        if (found == tables().blocks.end())
            misuse("a block is released that is gone");
        if (--found->second > 0)
            return;
        tables().blocks.erase(found);
    }
    if ((block->flags & Block::hasCopyDispose) != 0)
        block->descriptor->dispose(block);
    std::free(block);
}

namespace {

/// The kinds of captured fields (Block_private.h) that the executables have.
enum FieldKind : std::int32_t { objectField = 3, blockField = 7 };

void requireKnownField(std::int32_t kind) {
    if (kind != objectField && kind != blockField)
        endRun("a block that captures neither an object nor a block");
}

void assignField(Object** to, Object* captured, std::int32_t kind) {
    requireKnownField(kind);
    *to = retain(captured);
}

void disposeOfField(Object* captured, std::int32_t kind) {
    requireKnownField(kind);
    release(captured);
}

} // namespace

// Weak references: NSObject.mm and objc-weak.mm.

namespace {

Object* initWeak(Object** reference, Object* object) {
    const std::lock_guard lock(tables().mutex);
    *reference = object;
    if (object == nullptr || livesForEver(object))
        return object;
    Life& life = lifeOf(object);
    if (life.isEnding)
        misuse("a weak reference is made to an object that is being deallocated");
    life.weakReferences.insert(reference);
    return object;
}

Object* loadWeakRetained(Object** reference) {
    const std::lock_guard lock(tables().mutex);
    Object* const object = *reference;
    if (object == nullptr || livesForEver(object))
        return object;
    Life& life = lifeOf(object);
    if (life.isEnding)
        return nullptr;
    ++life.references;
    return object;
}

void destroyWeak(Object** reference) {
    const std::lock_guard lock(tables().mutex);
    if (*reference != nullptr && !livesForEver(*reference))
        lifeOf(*reference).weakReferences.erase(reference);
    *reference = nullptr;
}

} // namespace

Weak::~Weak() {
    destroyWeak(&object_);
}

void Weak::set(Object* object) {
    destroyWeak(&object_);
    initWeak(&object_, object);
}

Object* Weak::retained() {
    return loadWeakRetained(&object_);
}

// Associations: <objc/runtime.h>, objc-references.mm.

namespace {

enum AssociationPolicy : std::uintptr_t { assign = 0, keepBit = 1 };

void setAssociatedObject(Object* object, const void* key, Object* value, std::uintptr_t policy) {
    // Copying means retaining, except for a block on the stack; `retain` copies such a block.
    const bool isKept = (policy & keepBit) != 0;
    Object* const kept = isKept ? retain(value) : value;
    Association before{};
    {
        const std::lock_guard lock(tables().mutex);
        auto& associations = lifeOf(object).associations;
        if (const auto found = associations.find(key); found != associations.end())
            before = found->second;
        if (kept == nullptr)
            associations.erase(key);
        else
            associations[key] = {.isKept = isKept, .value = kept};
    }
    if (before.isKept)
        release(before.value);
}

} // namespace

// Autorelease pools: NSObject.mm. The runtime can hand a returned object over without a pool if the
// caller's next instruction takes the object. The runtime does not promise it, so here every object
// goes into a pool.

namespace {

struct OpenPool {
    Pool::Kind kind;
    std::vector<Object*> objects;
};

thread_local std::vector<OpenPool> pools;

void closePools(std::size_t depth) {
    while (pools.size() > depth) {
        // Releasing may autorelease more, into this very pool.
        while (!pools.back().objects.empty()) {
            Object* const last = pools.back().objects.back();
            pools.back().objects.pop_back();
            release(last);
        }
        pools.pop_back();
    }
}

void* poolPush() {
    pools.push_back({Pool::Kind::explicitly, {}});
    return reinterpret_cast<void*>(pools.size());
}

void poolPop(void* token) {
    const auto depth = reinterpret_cast<std::uintptr_t>(token);
    if (depth == 0 || depth > pools.size())
        misuse("an autorelease pool is popped that is not there");
    closePools(depth - 1);
}

} // namespace

Pool::Pool(Kind kind) : depth_(pools.size()) {
    pools.push_back({kind, {}});
}

Pool::~Pool() {
    closePools(depth_);
}

Object* autorelease(Object* object) {
    if (object == nullptr)
        return nullptr;
    if (pools.empty() || pools.back().kind == Pool::Kind::lastResort) {
        const std::string name = nameOf(object);
        {
            const std::lock_guard lock(tables().mutex);
            ++tables().releasedLate[name];
        }
        note("NO POOL: an object of class " + name + " is autoreleased without one");
    }
    // A thread without a pool gets one that is emptied when the thread ends.
    if (pools.empty())
        pools.push_back({Pool::Kind::lastResort, {}});
    pools.back().objects.push_back(object);
    return object;
}

// Messages: objc-runtime-new.mm.

namespace {

const Class* forwardingClass;
Forward forwardTo;

std::string quoted(const Class* isa, Selector selector) {
    return "[" + std::string(isa->facts().name) + " " + selector + "]";
}

void* found(const Class* isa, Object* receiver, Selector selector) {
    if (void* const method = findMethod(isa, selector))
        return method;
    if (receiver->isa == forwardingClass)
        return reinterpret_cast<void*>(forwardTo);
    misuse("no such method: " + quoted(isa, selector));
}

} // namespace

void* findMethod(const Class* isa, std::string_view selector) {
    for (; isa != nullptr; isa = isa->superclass) {
        const MethodList* const methods = isa->facts().methods;
        if (methods == nullptr)
            continue;
        // The top bit marks a form that the cross linker does not write (objc-runtime-new.h).
        if ((methods->entrySizeAndFlags & 0xFFFC) != sizeof(Method)
            || (methods->entrySizeAndFlags >> 31) != 0)
            endRun("methods in relative form");
        for (const Method& each : *methods) {
            if (each.name == selector)
                return each.implementation;
        }
    }
    return nullptr;
}

void* implementation(Object* receiver, Selector selector) {
    {
        const std::lock_guard lock(tables().mutex);
        if (!livesForEver(receiver))
            lifeOf(receiver);
    }
    return found(receiver->isa, receiver, selector);
}

void forwardMessagesTo(const FrameworkClass& of, Forward forward) {
    forwardingClass = &of.object;
    forwardTo = forward;
}

extern "C" void* objectiveCImplementation(Object* receiver, Selector selector) {
    return implementation(receiver, selector);
}

struct Super {
    Object* receiver;
    const Class* currentClass;
};

extern "C" void* objectiveCSuperImplementation(const Super* super, Selector selector) {
    return found(super->currentClass->superclass, super->receiver, selector);
}

// Exceptions: objc-exception.mm. An exception is a C++ exception that contains an object, which
// lives as long as the exception.

namespace {

struct NSException : Object {
    Strong<Object> reason;
};

Object* reasonOf(NSException* self, Selector /*selector*/) {
    return self->reason.get();
}

void releaseThrown(void* exception) {
    release(*static_cast<Object**>(exception));
}

} // namespace

FrameworkClass nsException("NSException", &nsObject.object, sizeof(NSException),
                           {constructing<NSException>(), destructing<NSException>(),
                            method<reasonOf>("reason")});

void throwException(const std::string& name, const std::string& reason) {
    note("throws " + name + ": " + reason);
    auto* const exception = allocate<NSException>(nsException);
    Object* const text = stringOf(reason);
    exception->reason.set(text);
    release(text);
    autorelease(exception);
    auto** const thrown = static_cast<Object**>(abi::__cxa_allocate_exception(sizeof(Object*)));
    *thrown = retain(exception);
    abi::__cxa_throw(thrown, const_cast<std::type_info*>(&typeid(NSException*)), releaseThrown);
}

// The ledger: what is still alive.

namespace {

std::string countedByName(const std::map<std::string, int>& counts) {
    std::string text;
    for (const auto& [name, count] : counts)
        text += " " + name + "=" + std::to_string(count);
    return text;
}

} // namespace

std::string objectLedger() {
    const std::lock_guard lock(tables().mutex);
    std::map<std::string, int> counts;
    std::size_t weakReferences = 0;
    std::size_t associations = 0;
    for (const auto& [object, life] : tables().objects) {
        ++counts[nameOf(object)];
        weakReferences += life.weakReferences.size();
        associations += life.associations.size();
    }
    counts["blocks"] = static_cast<int>(tables().blocks.size());
    counts["weak"] = static_cast<int>(weakReferences);
    counts["associations"] = static_cast<int>(associations);
    for (const auto& [name, count] : tables().releasedLate)
        counts["late:" + name] = count;
    return countedByName(counts);
}

bool isAnythingAlive() {
    const std::lock_guard lock(tables().mutex);
    return !tables().objects.empty() || !tables().blocks.empty();
}

std::string nameOf(const Object* object) {
    return isBlock(object) ? "block" : object->isa->facts().name;
}

namespace {

constexpr auto shims = std::to_array<Shim>({
    {"_OBJC_CLASS_$_NSObject", classAddress<nsObject>},
    {"_OBJC_EHTYPE_$_NSException", [] { return (void*)&typeid(NSException*); }},
    {"_OBJC_METACLASS_$_NSObject", metaclassAddress<nsObject>},
    {"__Block_object_assign", address<assignField>},
    {"__Block_object_dispose", address<disposeOfField>},
    {"__NSConcreteGlobalBlock", address<&globalBlock>},
    {"__NSConcreteStackBlock", address<&stackBlock>},
    {"___objc_personality_v0", address<&__gxx_personality_v0>},
    {"__objc_empty_cache", address<&emptyCache>},
    {"_objc_alloc", address<static_cast<Object* (*)(Class*)>(allocate)>},
    {"_objc_autoreleasePoolPop", address<poolPop>},
    {"_objc_autoreleasePoolPush", address<poolPush>},
    {"_objc_autoreleaseReturnValue", address<autorelease>},
    {"_objc_begin_catch", address<&abi::__cxa_begin_catch>},
    {"_objc_destroyWeak", address<destroyWeak>},
    {"_objc_end_catch", address<&abi::__cxa_end_catch>},
    {"_objc_initWeak", address<initWeak>},
    {"_objc_loadWeakRetained", address<loadWeakRetained>},
    {"_objc_msgSend", address<objectiveCMessage>},
    {"_objc_msgSendSuper2", address<objectiveCMessageToSuper>},
    {"_objc_release", address<release>},
    {"_objc_retain", address<retain>},
    {"_objc_retainAutoreleasedReturnValue", address<retain>},
    {"_objc_retainBlock", address<copyBlock>},
    {"_objc_setAssociatedObject", address<setAssociatedObject>},
});

} // namespace

Shims objectiveCShims() {
    return shims;
}

} // namespace velmo
