// The machinery of the undecorated entry points: each one forwards to its
// decorated entry point through the translation of its export table row.
#pragma once

#include <cstdint>
#include <tuple>
#include <type_traits>

#include "RynHwDll.h"
#include "core/Compat.h"

namespace ryn::exports {

enum class Translation { None, Result, AttributeId, DeviceTypeIn, DeviceTypeOut, EventWord2, RecordsWord2, SpmId };

// The result and argument types of a decorated entry point, which has the
// calling convention RYN_CALL.
template <auto Fn>
struct Signature;
template <class R, class... A, R(RYN_CALL *Fn)(A...)>
struct Signature<Fn> {
    using Result = R;
    using Arguments = std::tuple<A...>;
};

template <auto Fn>
using ResultOf = typename Signature<Fn>::Result;
template <auto Fn, std::size_t I>
using ArgOf = std::tuple_element_t<I, typename Signature<Fn>::Arguments>;

// A signed identifier through one of the translations, in the argument's own type.
template <class T>
T translated(T value, int32_t (*translation)(int32_t)) {
    return static_cast<T>(translation(static_cast<int32_t>(value)));
}

template <auto Fn, Translation T, class... A>
ResultOf<Fn> forward(A... args) {
    static_assert(std::is_same_v<std::tuple<A...>, typename Signature<Fn>::Arguments>);
    auto arguments = std::tie(args...);
    if constexpr (T == Translation::AttributeId) {
        std::get<1>(arguments) = translated(std::get<1>(arguments), compatAttributeId);
    } else if constexpr (T == Translation::DeviceTypeIn) {
        std::get<1>(arguments) = translated(std::get<1>(arguments), compatDeviceTypeToDriver);
    } else if constexpr (T == Translation::SpmId) {
        std::get<1>(arguments) = static_cast<ArgOf<Fn, 1>>(compatSpmId(static_cast<uint32_t>(std::get<1>(arguments))));
    }

    if constexpr (std::is_void_v<ResultOf<Fn>>) {
        static_assert(T == Translation::None, "a function without result has nothing to translate");
        Fn(args...);
    } else {
        const ResultOf<Fn> result = Fn(args...);
        if constexpr (T == Translation::None) {
            return result;
        } else {
            // Out-values are translated whatever the result.
            if constexpr (T == Translation::DeviceTypeOut) {
                if (auto *type = std::get<2>(arguments); type != nullptr)
                    *type = translated(*type, compatDeviceTypeFromDriver);
            } else if constexpr (T == Translation::EventWord2) {
                if (EventData *record = std::get<1>(arguments); record != nullptr)
                    record->word[2] = translated(record->word[2], compatDeviceTypeFromDriver);
            } else if constexpr (T == Translation::RecordsWord2) {
                // The first record of an array the caller says holds at least one.
                if (EventData *records = std::get<1>(arguments); records != nullptr && std::get<2>(arguments) >= 1)
                    records->word[2] = translated(records->word[2], compatDeviceTypeFromDriver);
            }
            return compatResultCode(result);
        }
    }
}

}  // namespace ryn::exports

// Parameter lists of an undecorated entry point, by the argument byte count
// of its row (every argument takes 4 bytes in the 32-bit convention).
#define RYN_P(F, i) ::ryn::exports::ArgOf<&F, i> a##i
#define RYN_PARAMS_0(F) void
#define RYN_PARAMS_4(F) RYN_P(F, 0)
#define RYN_PARAMS_8(F) RYN_PARAMS_4(F), RYN_P(F, 1)
#define RYN_PARAMS_12(F) RYN_PARAMS_8(F), RYN_P(F, 2)
#define RYN_PARAMS_16(F) RYN_PARAMS_12(F), RYN_P(F, 3)
#define RYN_PARAMS_20(F) RYN_PARAMS_16(F), RYN_P(F, 4)
#define RYN_PARAMS_24(F) RYN_PARAMS_20(F), RYN_P(F, 5)
#define RYN_PARAMS_28(F) RYN_PARAMS_24(F), RYN_P(F, 6)
#define RYN_PARAMS_32(F) RYN_PARAMS_28(F), RYN_P(F, 7)
#define RYN_PARAMS_36(F) RYN_PARAMS_32(F), RYN_P(F, 8)
#define RYN_PARAMS_40(F) RYN_PARAMS_36(F), RYN_P(F, 9)
#define RYN_PARAMS_44(F) RYN_PARAMS_40(F), RYN_P(F, 10)
#define RYN_PARAMS_48(F) RYN_PARAMS_44(F), RYN_P(F, 11)
#define RYN_PARAMS_52(F) RYN_PARAMS_48(F), RYN_P(F, 12)
#define RYN_PARAMS_56(F) RYN_PARAMS_52(F), RYN_P(F, 13)
#define RYN_PARAMS_60(F) RYN_PARAMS_56(F), RYN_P(F, 14)
#define RYN_PARAMS_64(F) RYN_PARAMS_60(F), RYN_P(F, 15)

#define RYN_ARGS_0
#define RYN_ARGS_4 a0
#define RYN_ARGS_8 RYN_ARGS_4, a1
#define RYN_ARGS_12 RYN_ARGS_8, a2
#define RYN_ARGS_16 RYN_ARGS_12, a3
#define RYN_ARGS_20 RYN_ARGS_16, a4
#define RYN_ARGS_24 RYN_ARGS_20, a5
#define RYN_ARGS_28 RYN_ARGS_24, a6
#define RYN_ARGS_32 RYN_ARGS_28, a7
#define RYN_ARGS_36 RYN_ARGS_32, a8
#define RYN_ARGS_40 RYN_ARGS_36, a9
#define RYN_ARGS_44 RYN_ARGS_40, a10
#define RYN_ARGS_48 RYN_ARGS_44, a11
#define RYN_ARGS_52 RYN_ARGS_48, a12
#define RYN_ARGS_56 RYN_ARGS_52, a13
#define RYN_ARGS_60 RYN_ARGS_56, a14
#define RYN_ARGS_64 RYN_ARGS_60, a15
