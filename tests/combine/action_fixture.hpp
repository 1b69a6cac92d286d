// A project of one test case: its roots, its file table, its rules, and what an action made of them.
#pragma once

#include "platform/image_loader/picture.hpp"
#include "processor/host/action_convert.hpp"
#include "processor/host/paths.hpp"
#include "tests/host/framework/test_folder.hpp"
#include "tests/support/no_processor.hpp"
#include "tests/support/test_rules.hpp"
#include "tests/support/test_tga.hpp"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <memory>

class ACTION_FIXTURE : public testing::Test {
protected:
    ACTION_FIXTURE() {
        QDir().mkpath(folder.path("raw"));
        PATHS::set_roots(PHYSICAL_PATH(folder.path("raw")), PHYSICAL_PATH(folder.path("out")));
    }

    /// A source on the disk, and in the file table unless said otherwise.
    void write(QString const& name, QByteArray const& contents, bool is_known = true) {
        folder.write("raw/" + name, contents);
        if (is_known)
            know(name, name);
    }
    /// An entry of the file table for a file of perhaps another name.
    void know(QString const& name, QString const& file) {
        entries.push_back(std::make_unique<FILE_ENTRY>(FILE_ENTRY{PHYSICAL_PATH(folder.path("raw/" + file)), {}}));
        files.insert(LOGICAL_PATH("<raw>/" + name), entries.back().get());
    }
    /// One colour all over: blue, green, red, alpha.
    static QByteArray flat(std::array<int, 4> const& texel, int width = 8, int height = 8) {
        return tga(width, height, [&](int, int) { return texel; });
    }
    PHYSICAL_PATH stem(QString const& name) const { return PHYSICAL_PATH(folder.path("raw/" + name)); }

    int run(ACTION_CONVERT& action) {
        target = action.get_target();
        int const status = action.run(files, rules);
        lines = action.output_lines().join('|').replace(folder.path() + '/', "");
        return status;
    }
    QString sources_of(ACTION_CONVERT& action) const {
        QVector<LOGICAL_PATH> sources;
        action.get_source_files(sources, files);
        QStringList texts;
        for (LOGICAL_PATH const& source : sources)
            texts.append(source.text().mid(6));
        return texts.join(' ');
    }
    /// Red, green, blue, alpha of the last target's texel.
    std::array<int, 4> shown(std::uint32_t x = 0, std::uint32_t y = 0) const {
        std::string cause;
        auto const picture = IMAGE_LOADER::load_picture(target.toStdString(), 0, 0, cause);
        EXPECT_TRUE(picture) << cause;
        if (!picture)
            return {};
        std::size_t const at = 4 * (std::size_t{y} * picture->width + x);
        return {picture->rgba[at], picture->rgba[at + 1], picture->rgba[at + 2], picture->rgba[at + 3]};
    }

    TEST_FOLDER folder;
    NO_PROCESSOR processor;
    FILE_MAP files;
    TEST_RULES rules;
    QString target;
    QString lines;

private:
    std::vector<std::unique_ptr<FILE_ENTRY>> entries;
};
