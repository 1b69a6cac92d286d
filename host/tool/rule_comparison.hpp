// Whether the rules still answer an action's questions as they did when it ran, and which answer changed, in words.
#pragma once

#include "host/tool/build_session.hpp"
#include "host/tool/recorded_action.hpp"

#include <map>
#include <optional>

namespace tool {

class RULE_COMPARISON {
public:
    explicit RULE_COMPARISON(BUILD_SESSION const& session) : session_(session) {}

    /// The first difference, with the place in a file that it comes from; nothing when there is none. A setting's
    /// number always goes with the same setting.
    std::optional<QString> difference(RECORDED_ACTION const& action, ACTION_SETTING const& setting);

private:
    /// What was asked of one rule of one path.
    struct QUESTIONS {
        QString path;
        QString rule;
        std::vector<framework::RULE_READ const*> reads;
        /// Values that are known to answer alike. The cache shares them among paths, so nearly every comparison ends
        /// with these.
        std::optional<RULE_VALUES const*> alike;
    };

    std::vector<QUESTIONS>& questions(std::int64_t number, ACTION_SETTING const& setting);
    std::optional<QString> difference(QUESTIONS& questions, LOGICAL_PATH const& path);
    QString described(framework::RULE_READ const& read, RULE const& now, LOGICAL_PATH const& path) const;

    BUILD_SESSION const& session_;
    std::map<std::int64_t, std::vector<QUESTIONS>> questions_;
};

}  // namespace tool
