#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <new>
#include <span>
#include <string>
#include <string_view>

/// The Objective-C runtime as far as the executables need it. Data in the executable is laid out as
/// in objc4's objc-runtime-new.h; framework classes take the same form, so that one look-up serves
/// both. Blocks are laid out as in libclosure's Block_private.h.
namespace velmo {

using Selector = const char*;

struct Method {
    Selector name;
    const char* types;
    void* implementation;
};

struct MethodList {
    std::uint32_t entrySizeAndFlags;
    std::uint32_t count;

    [[nodiscard]] const Method* begin() const { return reinterpret_cast<const Method*>(this + 1); }

    [[nodiscard]] const Method* end() const { return begin() + count; }
};

struct ClassFacts {
    std::uint32_t flags;
    std::uint32_t instanceStart;
    std::uint32_t instanceSize;
    std::uint32_t reserved;
    const void* strongIvars;
    const char* name;
    const MethodList* methods;
};

struct Class;

struct Object {
    Class* isa;
};

struct Class : Object {
    Class* superclass;
    void* cache[2];
    std::uintptr_t bits;

    [[nodiscard]] const ClassFacts& facts() const {
        return *reinterpret_cast<const ClassFacts*>(bits & ~std::uintptr_t{7});
    }
};

struct Protocol : Object {
    const char* name;
    const void* protocols;
    const MethodList* instanceMethods;
    const MethodList* others[3];
    const void* properties;
    std::uint32_t size;
    std::uint32_t flags;
    const char* const* extendedTypes; ///< in the order of the methods
};

struct Block {
    enum Flag : std::int32_t {
        needsFree = 1 << 24,
        hasCopyDispose = 1 << 25,
        isGlobal = 1 << 28,
        hasSignature = 1 << 30,
    };

    struct Descriptor {
        std::uintptr_t reserved;
        std::uintptr_t size;
        void (*copy)(Block* to, const Block* from);
        void (*dispose)(Block* block);
    };

    void* isa;
    std::int32_t flags;
    std::int32_t reserved;
    void* invoke;
    const Descriptor* descriptor;

    /// Calls a block with objects and whole numbers as arguments. A narrow number is widened, as
    /// Apple's calling convention demands of the caller.
    template<class... Arguments>
    void operator()(Arguments... arguments) {
        reinterpret_cast<void (*)(Block*, Arguments...)>(invoke)(this, arguments...);
    }
};

/// A class that a framework defines: the executable refers to the object itself.
struct FrameworkClass {
    FrameworkClass(const char* name, Class* superclass, std::size_t size,
                   std::initializer_list<Method> methods,
                   std::initializer_list<Method> classMethods = {});

    Class object{};
    Class meta{};

private:
    ClassFacts facts_;
    ClassFacts metaFacts_;
};

/// Returns the address of the class, for a row of a table of shims.
template<FrameworkClass& Of>
void* classAddress() {
    return &Of.object;
}

template<FrameworkClass& Of>
void* metaclassAddress() {
    return &Of.meta;
}

extern FrameworkClass nsObject;
extern FrameworkClass nsException;

/// The two methods that construct and destruct the C++ part of an object. T derives from Object.
template<class T>
Method constructing() {
    return {".cxx_construct", "", reinterpret_cast<void*>(+[](Object* self) {
                Class* const isa = self->isa;
                new (self) T;
                self->isa = isa;
                return self;
            })};
}

template<class T>
Method destructing() {
    return {".cxx_destruct", "",
            reinterpret_cast<void*>(+[](Object* self) { static_cast<T*>(self)->~T(); })};
}

/// Returns a row for a class's table of methods.
template<auto Function>
Method method(Selector name) {
    return {name, "", reinterpret_cast<void*>(Function)};
}

Object* allocate(Class* isa);

/// Registers an object that was not allocated: its references are never counted.
void makeImmortal(const Object* object);

/// Makes the objects and blocks immortal that the compiler has put into the executable.
void keepObjectsIn(std::span<const char> executable);

template<class T>
T* allocate(FrameworkClass& of) {
    return static_cast<T*>(allocate(&of.object));
}

/// These functions accept null too. A block is copied and released like any other object.
Object* retain(Object* object);
void release(Object* object);
Object* autorelease(Object* object);
Block* copyBlock(Block* block);
void releaseBlock(Block* block);

/// Takes over a block that was made with malloc, with one reference.
void keepOnHeap(Block* block);

/// Keeps an object for as long as it lives. T is a type of objects or Block.
template<class T>
class Strong {
public:
    Strong() = default;

    ~Strong() { set(nullptr); }

    Strong(const Strong&) = delete;
    Strong& operator=(const Strong&) = delete;

    void set(T* object) {
        T* const kept = reinterpret_cast<T*>(retain(reinterpret_cast<Object*>(object)));
        T* const before = object_;
        object_ = kept;
        release(reinterpret_cast<Object*>(before));
    }

    [[nodiscard]] T* get() const { return object_; }

private:
    T* object_ = nullptr;
};

/// Refers to an object without keeping it.
class Weak {
public:
    Weak() = default;
    ~Weak();
    Weak(const Weak&) = delete;
    Weak& operator=(const Weak&) = delete;

    void set(Object* object);

    /// Returns the object, retained, or null if it is gone.
    [[nodiscard]] Object* retained();

private:
    Object* object_ = nullptr;
};

/// A pool of autoreleased objects. The system's own threads have one of last resort, which is
/// emptied when they are idle: an object that ends up there is released late, and is counted as
/// such.
class Pool {
public:
    enum class Kind { explicitly, lastResort };

    explicit Pool(Kind kind);
    ~Pool();
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;

private:
    std::size_t depth_;
};

/// Returns null if neither the class nor any above it has the method.
void* findMethod(const Class* isa, std::string_view selector);

/// Returns the function that a message leads to. Ends the run if the message leads to none.
void* implementation(Object* receiver, Selector selector);

/// Sends a message with objects and whole numbers as its arguments and its result.
template<class Result, class... Arguments>
Result send(Object* receiver, Selector selector, Arguments... arguments) {
    return reinterpret_cast<Result (*)(Object*, Selector, Arguments...)>(
        implementation(receiver, selector))(receiver, selector, arguments...);
}

/// Handles messages to objects of a class that has no method for them. The function gets the
/// message's first words as they are in the registers.
using Forward = std::uint64_t (*)(Object* self, Selector selector, std::uint64_t, std::uint64_t,
                                  std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t);
void forwardMessagesTo(const FrameworkClass& of, Forward forward);

[[noreturn]] void throwException(const std::string& name, const std::string& reason);

/// Returns what is alive, in one line: objects by class, heap blocks, weak references,
/// associations, and how many objects were autoreleased outside the program's own pools.
std::string objectLedger();

[[nodiscard]] bool isAnythingAlive();

/// Returns the name of the object's class.
std::string nameOf(const Object* object);

} // namespace velmo
