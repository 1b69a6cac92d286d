// Diagnostics as a test compares them: whole lines, with the test's folder cut off.
#pragma once

#include "host/framework/diagnostic.hpp"
#include "tests/host/framework/test_folder.hpp"

inline std::string messages(framework::DIAGNOSTICS const& diagnostics, TEST_FOLDER const& folder) {
    QString text;
    for (framework::DIAGNOSTIC const& diagnostic : diagnostics)
        text += framework::format(diagnostic) + u'\n';
    return text.replace(folder.path() + u'/', QString()).toStdString();
}
