// What the templates of setting_types.h need to know of a value's type.

#ifndef LAPWING_DETAIL_SETTING_TRAITS_H
#define LAPWING_DETAIL_SETTING_TRAITS_H

#include <cstdint>
#include <string>
#include <type_traits>

namespace lapwing::detail {

template <class V>
inline constexpr bool isSettingType =
    std::is_same_v<V, bool> || std::is_same_v<V, std::int32_t> || std::is_same_v<V, double> ||
    std::is_same_v<V, std::string> || std::is_same_v<V, std::wstring>;

// How a value is passed: strings by reference, the rest by value.
template <class V>
using Parameter = std::conditional_t<std::is_scalar_v<V>, V, const V&>;

}  // namespace lapwing::detail

#endif  // LAPWING_DETAIL_SETTING_TRAITS_H
