// Which rule properties processors ask for while they make their actions. What an action is made from is nowhere to be
// seen afterwards, so the values of all of them, at the action's own sources, count as read by the action.
#pragma once

#include "host/framework/read_recorder.hpp"

#include <map>
#include <string>

namespace framework {

/// Questions, not answers: there are as many answers as files.
struct RULE_QUESTIONS {
    struct QUESTION {
        QString rule;
        /// Empty: whether the rule exists.
        QString property;
    };
    /// By the name of the topic under which they were asked.
    std::map<std::string, std::vector<QUESTION>, std::less<>> by_topic;
    /// Global rules that were read under whatever topic, with the values that they had.
    std::vector<RULE_READ> globals;
};

class ZAB_SHARED_API RULE_QUESTION_RECORDER : public READ_LISTENER {
public:
    RULE_QUESTIONS take() { return std::move(questions_); }

    void rule_was_read(QString const& path, QString const& rule, QString const& property,
                       QVariant const& value) override;

private:
    RULE_QUESTIONS questions_;
};

}  // namespace framework
