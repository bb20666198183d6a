// What a user types and what a project's file holds: read without a crash, refused with one line,
// and what was read is written and read again as the same.

#include <gtest/gtest.h>

#include <algorithm>

#include "fuzz/session.h"
#include "fuzz/targets.h"
#include "host/document/FilterChain.h"
#include "host/document/FilterError.h"
#include "host/document/ParameterSweep.h"
#include "host/document/Project.h"
#include "host/media/FrameTemplate.h"
#include "host/media/VideoOptions.h"
#include "host/media/file_names.h"
#include "host/render/CommandLine.h"
#include "host/render/ExitCode.h"
#include "host/render/FrameList.h"
#include "host/render/MemoryLimit.h"

namespace fuzz {

namespace {

QString asText(const std::string& bytes) {
    return QString::fromUtf8(bytes.data(), static_cast<int>(bytes.size()));
}

/// Runs work; an error of this kind must have words, and fit a line when it is shown.
template <class Error, class Work>
bool succeeds(Work work) {
    try {
        work();
        return true;
    } catch (const Error& error) {
        const std::string shown = media::shown(error.what());
        EXPECT_FALSE(shown.empty());
        EXPECT_EQ(shown.find('\n'), std::string::npos);
        return false;
    }
}

QByteArray writtenProject(const QByteArray& bytes) {
    std::vector<std::string> notices;
    return document::writeProject(document::readProject(bytes, "/folder", notices), "/folder");
}

}  // namespace

void project(Input input) {
    filters();
    const std::string bytes = input.rest();
    QByteArray written;
    const QByteArray file(bytes.data(), static_cast<int>(bytes.size()));
    if (!succeeds<document::ProjectError>([&] { written = writtenProject(file); })) return;
    EXPECT_EQ(writtenProject(written).toStdString(), written.toStdString());
}

void filterText(Input input) {
    const document::FilterCatalog& catalog = filters();
    const int use = input.number(0, 3);
    QStringList texts = {asText(input.line())};
    while (!input.isEmpty()) texts << asText(input.line());
    const QString last = texts.takeLast();
    if (use == 0) texts << last;
    if (!succeeds<document::FilterError>([&] { document::setFilterChain(texts, catalog); })) return;
    if (use == 1 && !succeeds<document::FilterError>([&] { overrideFilter(last, catalog); }))
        return;
    if (use == 2) {
        const int mostValues = 100;
        succeeds<document::FilterError>([&] {
            const auto sweep = document::sweepFromText(last, catalog, mostValues);
            EXPECT_GE(sweep.values.size(), 1u);
            EXPECT_LE(sweep.values.size(), static_cast<std::size_t>(mostValues));
        });
    }
    const QStringList current = document::currentFilterTexts(catalog);
    document::setFilterChain(current, catalog);
    EXPECT_EQ(document::currentFilterTexts(catalog).join('\n').toStdString(),
              current.join('\n').toStdString());
}

void frameList(Input input) {
    const int use = input.number(0, 4);
    std::vector<std::int64_t> frames = {input.any<std::int8_t>()};
    for (int count = input.number(0, 40); count > 0; --count)
        frames.push_back(frames.back() + 1 + input.byte() % 4);
    const std::string first = input.line(), second = input.line();
    if (use == 0) {
        // A list chooses what its parts choose.
        std::vector<std::int64_t> one, other, both;
        const auto choose = [&](const std::string& list, std::vector<std::int64_t>& chosen) {
            return succeeds<render::UsageError>(
                [&] { chosen = render::FrameList(list).chosenFrom(frames); });
        };
        const bool each = choose(first, one) && choose(second, other);
        const bool joined = choose(first + ',' + second, both);
        EXPECT_TRUE(joined == each || first.find(',') != std::string::npos ||
                    second.find(',') != std::string::npos);
        if (!each) return;
        std::vector<std::int64_t> expected;
        std::set_union(one.begin(), one.end(), other.begin(), other.end(),
                       std::back_inserter(expected));
        EXPECT_EQ(both, expected);
        EXPECT_TRUE(std::includes(frames.begin(), frames.end(), both.begin(), both.end()));
    } else if (use == 1) {
        const auto pattern = media::FrameTemplate::parse(first);
        if (!pattern) return;
        for (const std::int64_t frame : frames) {
            if (frame < 0) continue;
            const std::string name = media::fileNameOf(pattern->path(frame));
            EXPECT_EQ(pattern->frameOf(name), frame);
        }
        pattern->frameOf(second);
    } else if (use == 2) {
        succeeds<render::UsageError>([&] {
            const media::SampleRange range = render::parseRange(first);
            EXPECT_TRUE(range.kind != media::SampleRange::Given || range.low < range.high);
        });
    } else if (use == 3) {
        succeeds<render::UsageError>([&] { EXPECT_GT(render::parseMemorySize(first), 0); });
    } else {
        media::Ratio rate;
        if (media::parseFrameRate(first, rate)) {
            EXPECT_GT(rate.numerator, 0);
            EXPECT_GT(rate.denominator, 0);
        }
    }
}

void commandLine(Input input) {
    std::vector<std::string> arguments;
    while (!input.isEmpty()) arguments.push_back(input.line());
    succeeds<render::UsageError>([&] { render::parseCommandLine(arguments); });
}

}  // namespace fuzz
