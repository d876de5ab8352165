// That scalars never allocate and moving never does, counted by the program's own operator new.
#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>

#include "value/ValueTesting.h"

namespace {
std::size_t allocations = 0;
}  // namespace

// Not inlined: GCC 12 would see a free() of what it takes for the standard operator's memory.
__attribute__((noinline)) void* operator new(std::size_t size) {
    ++allocations;
    void* memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
__attribute__((noinline)) void operator delete(void* memory) noexcept {
    std::free(memory);
}
__attribute__((noinline)) void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

using namespace value_testing;

template <typename Action>
std::size_t AllocationsOf(Action action) {
    const std::size_t before = allocations;
    action();
    return allocations - before;
}

TEST(Allocation, CounterSeesAString) {
    EXPECT_GT(AllocationsOf([] { (void)Str("abc"); }), 0U);
}

TEST(Allocation, ScalarsOperateWithoutAny) {
    CErrorLog log;
    const ErrorLocation& here = ErrorLocationNull::Get();
    const CValue values[] = {CValue(true),  CValue(7),      CValue(1.5F),    CValue(2.5),    Of(T::Time, 5),
                             Of(T::Int, 3), Of(T::Byte, 9), Of(T::ULInt, 4), Of(T::Date, 1), CValue()};
    bool ok = true;
    const std::size_t count = AllocationsOf([&] {
        for (const CValue& value : values) {
            CValue left(value);
            CValue right(value);
            CValue moved(std::move(left));
            left = moved;
            ok = left.EQ(log, here, right) && ok;
            left = std::move(moved);
            if (value.IsTypeOf(T::AnyNum)) {
                ok = left.Add(log, here, right) && left.Mul(log, here, right) && left.Div(log, here, right) &&
                     left.ChangeType(log, here, T::LReal) && left.LT(log, here, right) && ok;
            }
        }
    });
    EXPECT_TRUE(ok);
    EXPECT_EQ(count, 0U);
}

TEST(Allocation, MovingAStringTakesNone) {
    CValue source = Str("a text that fits no small buffer, for sure it does not");
    CValue target;
    EXPECT_EQ(AllocationsOf([&] {
                  CValue moved(std::move(source));
                  target = std::move(moved);
              }),
              0U);
    EXPECT_EQ(target.GetType(), T::String);
}

}  // namespace
