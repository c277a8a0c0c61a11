// Answers what a screen presents, as a user would, and lets every dismissal come to its end.
#pragma once

#include "platform/views/Presentation.h"
#include "platform/views/ViewController.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace quillomat::testing {

template <typename T> std::shared_ptr<T> presentedAs(const ViewController& screen) {
    return std::dynamic_pointer_cast<T>(screen.presented());
}

inline std::vector<std::string> actionTitles(const AlertController& alert) {
    std::vector<std::string> titles;
    for (const AlertAction& action : alert.actions()) {
        titles.push_back(action.title);
    }
    return titles;
}

/// Lets dismissals end until what stands in front, if anything, stands firmly.
inline void settle(ViewController& screen) {
    while (screen.isDismissing() && screen.presented()) {
        screen.dismissalEnded(screen.presented()->id());
    }
}

/// Presses the action of that title without letting the alert go yet.
inline void pressOnly(ViewController& screen, const std::string& title, const std::string& text = {}) {
    const auto alert = presentedAs<AlertController>(screen);
    ASSERT_TRUE(alert) << "no alert to answer with " << title;
    const auto titles = actionTitles(*alert);
    for (std::size_t index = 0; index < titles.size(); ++index) {
        if (titles[index] == title) {
            screen.answerAlert(alert->id(), index, text);
            return;
        }
    }
    FAIL() << alert->title() << " has no action " << title;
}

inline void press(ViewController& screen, const std::string& title, const std::string& text = {}) {
    pressOnly(screen, title, text);
    settle(screen);
}

/// Picks a file in the document picker in front.
inline void pickDocument(ViewController& screen, const std::string& path) {
    const auto picker = presentedAs<DocumentPickerController>(screen);
    ASSERT_TRUE(picker) << "no document picker";
    screen.answerDocumentPicker(picker->id(), path);
    settle(screen);
}

} // namespace quillomat::testing
