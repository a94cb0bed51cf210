// SPDX-License-Identifier: MIT
#include "soak/verdict.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace orvanta::soak {
namespace {

constexpr double kSecondsPerHour = 3600;
constexpr double kLongestWarmUp = 900;
constexpr std::size_t kFewestSamples = 3;
constexpr double kGrowthLimit = 1024; ///< KiB per hour; in all, for a run that is shorter
/// As many polls as may be under way at a time: one every 0.2 s, each of 2 s at the most. On a
/// machine that is busy enough they are.
constexpr long kPollsUnderWay = 10;
constexpr long kMayVary = -1;

struct Figure {
    const char* name;
    long Sample::*field;
    long surplus = kMayVary; ///< at any one sample, above what it mostly is; if it must be flat
};

const std::vector<Figure> kFigures{{"resident, KiB", &Sample::resident},
                                   {"PSS, KiB", &Sample::proportional},
                                   {"anonymous, KiB", &Sample::anonymous},
                                   {"descriptors", &Sample::descriptors, kPollsUnderWay},
                                   {"threads", &Sample::threads, 1},
                                   {"children", &Sample::children, 1},
                                   {"files", &Sample::files}};

std::vector<Sample> judged(const std::vector<Sample>& samples) {
    const double warmUp = warmUpSeconds(samples.empty() ? 0 : samples.back().seconds);
    std::vector<Sample> rest;
    std::copy_if(samples.begin(), samples.end(), std::back_inserter(rest),
                 [&](const Sample& sample) { return sample.seconds >= warmUp; });
    return rest;
}

double median(std::vector<long> values) {
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? static_cast<double>(values[half])
                                  : static_cast<double>(values[half - 1] + values[half]) / 2;
}

double slopePerHour(const std::vector<Sample>& samples, long Sample::*field) {
    double meanTime = 0;
    double meanValue = 0;
    const auto count = static_cast<double>(samples.size());
    for (const Sample& sample : samples) {
        meanTime += sample.seconds / count;
        meanValue += static_cast<double>(sample.*field) / count;
    }
    double together = 0;
    double alone = 0;
    for (const Sample& sample : samples) {
        const double time = sample.seconds - meanTime;
        together += time * (static_cast<double>(sample.*field) - meanValue);
        alone += time * time;
    }
    return alone > 0 ? together / alone * kSecondsPerHour : 0;
}

QString complaintAboutCount(const Figure& figure, const Course& course) {
    const auto name = QString::fromLatin1(figure.name);
    if (course.firstQuarter != course.lastQuarter) {
        return QStringLiteral("%1 went from %2 to %3 (medians of the first and the last quarter)")
            .arg(name)
            .arg(course.firstQuarter)
            .arg(course.lastQuarter);
    }
    if (static_cast<double>(course.greatest - figure.surplus) > course.firstQuarter) {
        return QStringLiteral("%1 rose to %2, mostly being %3")
            .arg(name)
            .arg(course.greatest)
            .arg(course.firstQuarter);
    }
    return {};
}

QString complaintAboutMemory(const std::vector<Sample>& samples) {
    const double hours = (samples.back().seconds - samples.front().seconds) / kSecondsPerHour;
    const double slope = courseOf(samples, &Sample::resident).slopePerHour;
    if (slope * std::min(hours, 1.0) < kGrowthLimit) {
        return {};
    }
    return QStringLiteral("resident memory grows by %1 KiB per hour (over %2 hours)")
        .arg(slope, 0, 'f', 0)
        .arg(hours, 0, 'f', 2);
}

QString row(const QString& name, const QStringList& cells) {
    QString text = name.leftJustified(16);
    for (const QString& cell : cells) {
        text += cell.rightJustified(16);
    }
    return text + QLatin1Char('\n');
}

} // namespace

double warmUpSeconds(double runSeconds) {
    return std::min(runSeconds / 4, kLongestWarmUp);
}

Course courseOf(const std::vector<Sample>& samples, long Sample::*field) {
    std::vector<long> values;
    std::transform(samples.begin(), samples.end(), std::back_inserter(values),
                   [field](const Sample& sample) { return sample.*field; });
    const auto quarter = static_cast<std::ptrdiff_t>((values.size() + 3) / 4);
    const auto [least, most] = std::minmax_element(values.begin(), values.end());
    return {.firstQuarter = median({values.begin(), values.begin() + quarter}),
            .lastQuarter = median({values.end() - quarter, values.end()}),
            .slopePerHour = slopePerHour(samples, field),
            .smallest = *least,
            .greatest = *most};
}

QString tableOf(const std::vector<Sample>& samples) {
    const std::vector<Sample> rest = judged(samples);
    if (rest.empty()) {
        return {};
    }
    QString table = row(QString(), {QStringLiteral("first quarter"), QStringLiteral("last quarter"),
                                    QStringLiteral("per hour"), QStringLiteral("smallest"),
                                    QStringLiteral("greatest")});
    for (const Figure& figure : kFigures) {
        const Course course = courseOf(rest, figure.field);
        table += row(QString::fromLatin1(figure.name),
                     {QString::number(course.firstQuarter), QString::number(course.lastQuarter),
                      QString::number(course.slopePerHour, 'f', 1),
                      QString::number(course.smallest), QString::number(course.greatest)});
    }
    return table;
}

QStringList complaintsAbout(const std::vector<Sample>& samples, bool judgesMemory) {
    const std::vector<Sample> rest = judged(samples);
    if (rest.size() < kFewestSamples) {
        return {QStringLiteral("only %1 samples after the warm-up; %2 are needed")
                    .arg(rest.size())
                    .arg(kFewestSamples)};
    }
    QStringList complaints;
    for (const Figure& figure : kFigures) {
        if (figure.surplus != kMayVary) {
            complaints << complaintAboutCount(figure, courseOf(rest, figure.field));
        }
    }
    if (judgesMemory) {
        complaints << complaintAboutMemory(rest);
    }
    complaints.removeAll(QString());
    return complaints;
}

} // namespace orvanta::soak
