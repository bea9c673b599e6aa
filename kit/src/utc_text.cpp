#include "utc_text.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace lapwing {

namespace {

constexpr std::int64_t secondsPerDay = 86400;
constexpr std::int64_t daysPerEra = 146097;   // 400 years
constexpr std::int64_t daysToEpoch = 719468;  // since March 1st of the year 0

struct Date {
    std::int64_t year;
    std::int64_t month;
    std::int64_t day;
};

struct Division {
    std::int64_t quotient;
    std::int64_t remainder;
};

Division floorDivision(std::int64_t dividend, std::int64_t divisor) {
    std::int64_t quotient = dividend / divisor;
    if (dividend % divisor < 0) {
        --quotient;
    }
    return {quotient, dividend - quotient * divisor};
}

// Years begin in March here, so that the leap day is the last of its year.
std::int64_t daysOf(const Date& date) {
    const Division era = floorDivision(date.month > 2 ? date.year : date.year - 1, 400);
    const std::int64_t years = era.remainder;
    const std::int64_t months = date.month > 2 ? date.month - 3 : date.month + 9;
    return era.quotient * daysPerEra + years * 365 + years / 4 - years / 100 +
           (153 * months + 2) / 5 + date.day - 1 - daysToEpoch;
}

Date dateOf(std::int64_t days) {
    const Division era = floorDivision(days + daysToEpoch, daysPerEra);
    const std::int64_t day = era.remainder;
    const std::int64_t years = (day - day / 1460 + day / 36524 - day / 146096) / 365;
    const std::int64_t dayOfYear = day - (365 * years + years / 4 - years / 100);
    const std::int64_t months = (5 * dayOfYear + 2) / 153;
    const std::int64_t month = months < 10 ? months + 3 : months - 9;
    return {era.quotient * 400 + years + (month <= 2 ? 1 : 0), month,
            dayOfYear - (153 * months + 2) / 5 + 1};
}

bool isDigit(char character) {
    return '0' <= character && character <= '9';
}

bool hasForm(std::string_view text) {
    constexpr std::string_view form = "0000-00-00T00:00:00Z";
    return std::equal(text.begin(), text.end(), form.begin(), form.end(), [](char is, char mustBe) {
        return mustBe == '0' ? isDigit(is) : is == mustBe;
    });
}

std::int64_t numberOf(std::string_view digits) {
    std::int64_t number = 0;
    for (const char digit : digits) {
        number = number * 10 + (digit - '0');
    }
    return number;
}

// The digits of text in the right form, whatever they say.
UtcSeconds timeOf(std::string_view text) {
    const auto number = [&](std::size_t start) { return numberOf(text.substr(start, 2)); };
    const Date date{numberOf(text.substr(0, 4)), number(5), number(8)};
    return UtcSeconds(std::chrono::seconds(daysOf(date) * secondsPerDay + number(11) * 60 * 60 +
                                           number(14) * 60 + number(17)));
}

void appendDigits(std::string& text, std::int64_t number, std::size_t count) {
    const std::string digits = std::to_string(number);
    text.append(count - digits.size(), '0').append(digits);
}

}  // namespace

std::optional<std::string> toUtcText(UtcSeconds time) {
    const Division days = floorDivision(time.time_since_epoch().count(), secondsPerDay);
    const Date date = dateOf(days.quotient);
    if (date.year < 0 || date.year > 9999) {
        return std::nullopt;
    }
    std::string text;
    appendDigits(text, date.year, 4);
    for (const auto& [separator, number] : {std::pair{'-', date.month},
                                            {'-', date.day},
                                            {'T', days.remainder / 3600},
                                            {':', days.remainder / 60 % 60},
                                            {':', days.remainder % 60}}) {
        text += separator;
        appendDigits(text, number, 2);
    }
    return text + 'Z';
}

std::optional<UtcSeconds> fromUtcText(std::string_view text) {
    if (!hasForm(text)) {
        return std::nullopt;
    }
    const UtcSeconds time = timeOf(text);
    // What does not exist, such as February 30th, has become another time.
    return toUtcText(time) == text ? std::optional(time) : std::nullopt;
}

}  // namespace lapwing
