#include "app/MonitorPlan.h"

#include "platform/Number.h"
#include "platform/TextHelpers.h"

#include <cmath>
#include <cstdio>

namespace zav {
namespace {

bool wholeNumber(const std::string& text, long long& value) {
    if (text.empty() || text.size() > 12)
        return false;
    value = 0;
    for (char c : text) {
        if (c < '0' || c > '9')
            return false;
        value = value * 10 + (c - '0');
    }
    return true;
}

// A local date and time, or nothing when the fields name none (31 February, 25:00).
std::optional<std::time_t> localTime(int year, int month, int day, int hour, int minute,
                                     int second) {
    if (month < 1 || month > 12 || day < 1 || day > 31 || hour > 23 || minute > 59 || second > 59)
        return std::nullopt;
    std::tm t{};
    t.tm_year = year - 1900;
    t.tm_mon = month - 1;
    t.tm_mday = day;
    t.tm_hour = hour;
    t.tm_min = minute;
    t.tm_sec = second;
    t.tm_isdst = -1;
    const std::time_t result = std::mktime(&t);
    if (result == static_cast<std::time_t>(-1) || t.tm_mday != day)
        return std::nullopt;
    return result;
}

} // namespace

std::optional<std::vector<double>> ParseFrequencyList(const std::string& text) {
    std::vector<double> list;
    std::string item;
    auto take = [&]() {
        if (item.empty())
            return true;
        if (!IsNumber(item))
            return false;
        const double f = Number(item);
        item.clear();
        if (!(f > 0) || !std::isfinite(f))
            return false;
        list.push_back(f);
        return true;
    };
    for (char c : text) {
        if (c == ',' || c == ';' || c == ' ' || c == '\t') {
            if (!take())
                return std::nullopt;
        } else {
            item += c;
        }
    }
    if (!take() || list.empty())
        return std::nullopt;
    return list;
}

std::optional<int> ParseDuration(const std::string& text) {
    if (text.empty())
        return std::nullopt;
    long long unit = 1;
    std::string digits = text;
    switch (text.back()) {
    case 's':
        digits.pop_back();
        break;
    case 'm':
        unit = 60;
        digits.pop_back();
        break;
    case 'h':
        unit = 3600;
        digits.pop_back();
        break;
    default:
        break;
    }
    long long n = 0;
    if (!wholeNumber(digits, n) || n < 1 || n * unit > 366LL * 24 * 3600)
        return std::nullopt;
    return static_cast<int>(n * unit);
}

std::optional<std::time_t> ParseUntil(const std::string& text, std::time_t now) {
    int year, month, day, hour, minute, second = 0;
    char sep = 0, end = 0;
    if (std::sscanf(text.c_str(), "%4d-%2d-%2d%c%2d:%2d:%2d%c", &year, &month, &day, &sep, &hour,
                    &minute, &second, &end) == 7 ||
        (second = 0, std::sscanf(text.c_str(), "%4d-%2d-%2d%c%2d:%2d%c", &year, &month, &day, &sep,
                                 &hour, &minute, &end) == 6)) {
        if (sep != ' ' && sep != 'T')
            return std::nullopt;
        return localTime(year, month, day, hour, minute, second);
    }
    second = 0;
    if (std::sscanf(text.c_str(), "%2d:%2d:%2d%c", &hour, &minute, &second, &end) != 3 &&
        (second = 0, std::sscanf(text.c_str(), "%2d:%2d%c", &hour, &minute, &end) != 2))
        return std::nullopt;
    const std::tm today = LocalTime(now);
    std::optional<std::time_t> t =
        localTime(today.tm_year + 1900, today.tm_mon + 1, today.tm_mday, hour, minute, second);
    if (t && *t <= now)
        t = localTime(today.tm_year + 1900, today.tm_mon + 1, today.tm_mday + 1, hour, minute,
                      second);
    return t;
}

std::vector<std::string> ReadMonitorSection(const IniFile& profile, std::time_t now,
                                            MonitorPlan& plan) {
    std::vector<std::string> problems;
    auto bad = [&](const char* key, const std::string& value) {
        problems.push_back("monitor " + std::string(key) + " \"" + value + "\" is not valid");
    };
    auto wholeUpTo = [&](const char* key, long long limit, int& field) {
        if (auto v = profile.Value("monitor", key)) {
            long long n = 0;
            if (wholeNumber(*v, n) && n <= limit)
                field = static_cast<int>(n);
            else
                bad(key, *v);
        }
    };
    if (auto v = profile.Value("monitor", "Frequencies")) {
        if (auto list = ParseFrequencyList(*v))
            plan.frequenciesMHz = *list;
        else
            bad("Frequencies", *v);
    }
    if (auto v = profile.Value("monitor", "Every")) {
        if (auto s = ParseDuration(*v))
            plan.intervalSeconds = *s;
        else
            bad("Every", *v);
    }
    wholeUpTo("Count", 10'000'000, plan.count);
    if (auto v = profile.Value("monitor", "Until")) {
        if (auto t = ParseUntil(*v, now))
            plan.until = t;
        else
            bad("Until", *v);
    }
    if (auto v = profile.Value("monitor", "Mode"); v && !v->empty())
        plan.mode = *v;
    wholeUpTo("Settle", 60'000, plan.settleMs);
    wholeUpTo("Rig", 1'000'000, plan.rigModel);
    if (auto v = profile.Value("monitor", "RigPort"))
        plan.rigPort = *v;
    return problems;
}

std::string CheckMonitorPlan(const MonitorPlan& plan) {
    if (plan.rigModel == 0 && plan.frequenciesMHz.size() > 1)
        return "several frequencies need a rig to tune them (--rig MODEL --rig-port PORT)";
    if (plan.intervalSeconds < 1)
        return "the interval between cycles must be at least one second";
    return "";
}

} // namespace zav
