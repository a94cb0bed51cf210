// SPDX-License-Identifier: MIT
#include "soak/measure.h"

#include "integration/tray/process_table.h"

#include <QDirIterator>

#include <algorithm>
#include <chrono>
#include <climits>
#include <fstream>
#include <string>
#include <thread>

namespace orvanta::soak {
namespace {

constexpr int kLooks = 60;
constexpr std::chrono::milliseconds kBetweenLooks{25};

void readMemory(pid_t tray, Sample& sample) {
    std::ifstream file("/proc/" + std::to_string(tray) + "/smaps_rollup");
    std::string word;
    while (file >> word) {
        if (word == "Rss:") {
            file >> sample.resident;
        } else if (word == "Pss:") {
            file >> sample.proportional;
        } else if (word == "Anonymous:") {
            file >> sample.anonymous;
        }
    }
}

long fileCount(const QString& folder) {
    QDirIterator entries(folder, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    long count = 0;
    while (entries.hasNext()) {
        entries.next();
        ++count;
    }
    return count;
}

void look(pid_t tray, Sample& least) {
    const auto lower = [](long& value, std::size_t seen) {
        value = std::min(value, static_cast<long>(seen));
    };
    lower(least.descriptors, tests::descriptorCount(tray));
    lower(least.threads, tests::threadCount(tray));
    lower(least.children, tests::childrenOf(tray).size());
}

} // namespace

Sample measure(pid_t tray, const QString& stateRoot) {
    Sample sample;
    sample.descriptors = sample.threads = sample.children = LONG_MAX;
    for (int looks = 0; looks < kLooks; ++looks) {
        look(tray, sample);
        std::this_thread::sleep_for(kBetweenLooks);
    }
    readMemory(tray, sample);
    sample.files = fileCount(stateRoot);
    return sample;
}

QByteArray csvHeader() {
    return "seconds,deeds,resident_kib,pss_kib,anonymous_kib,descriptors,threads,children,files\n";
}

QByteArray csvLine(const Sample& sample) {
    return QStringLiteral("%1,%2,%3,%4,%5,%6,%7,%8,%9\n")
        .arg(sample.seconds, 0, 'f', 1)
        .arg(sample.deeds)
        .arg(sample.resident)
        .arg(sample.proportional)
        .arg(sample.anonymous)
        .arg(sample.descriptors)
        .arg(sample.threads)
        .arg(sample.children)
        .arg(sample.files)
        .toUtf8();
}

} // namespace orvanta::soak
