#include "cvnwinfo/macos/window_finder.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "cvnwinfo/macos/display.h"
#include "cvnwinfo/title.h"

namespace corvane::wintool {

namespace {

class Search {
  public:
    explicit Search(std::string_view title) : title_(title) {}

    // Asks those applications that have not been asked yet.
    std::optional<Window> among(const std::vector<ListedWindow>& listed);

    [[noreturn]] void fail() const {
        const std::string notFound = "no window titled " + inQuotes(title_);
        throw WindowError(silence_.empty() ? notFound : notFound + ", and " + silence_);
    }

  private:
    void ask(const ListedWindow& listed, std::vector<Window>& found);
    void consider(Element element, pid_t process, std::vector<Window>& found) const;

    std::string_view title_;
    std::set<pid_t> asked_;
    std::string silence_;  // the first application that did not answer, as a message
};

// An application that has not answered once is not waited for again.
void Search::ask(const ListedWindow& listed, std::vector<Window>& found) {
    try {
        for (Element& element : Element(listed.process, listed.application).windows()) {
            consider(std::move(element), listed.process, found);
        }
    } catch (const SilentApplication& silent) {
        if (silence_.empty()) {
            silence_ = silent.what();
        }
    } catch (const WindowGone&) {
        // The application has ended since the window server listed its windows.
    }
}

void Search::consider(Element element, pid_t process, std::vector<Window>& found) const {
    try {
        std::string title = element.title();
        if (!title.starts_with(title_)) {
            return;
        }
        if (const std::optional<Rectangle> frame = element.frame()) {
            found.push_back({std::move(element), process, std::move(title), *frame});
        }
    } catch (const WindowGone&) {
        // It has been closed since the application listed it.
    }
}

std::optional<Window> Search::among(const std::vector<ListedWindow>& listed) {
    std::vector<Window> found;
    for (const ListedWindow& window : listed) {
        if (asked_.insert(window.process).second) {
            ask(window, found);
        }
    }
    // Where windows of one application have the same frame, each counts as the frontmost of them.
    const auto depth = [&listed](const Window& window) {
        return std::find_if(listed.begin(), listed.end(),
                            [&window](const ListedWindow& each) {
                                return each.process == window.process && each.frame == window.frame;
                            }) -
               listed.begin();
    };
    std::stable_sort(found.begin(), found.end(), [&depth](const Window& one, const Window& other) {
        return depth(one) < depth(other);
    });
    std::vector<std::string> titles;
    titles.reserve(found.size());
    for (const Window& window : found) {
        titles.push_back(window.title);
    }
    const std::optional<std::size_t> index = chooseTitle(titles, title_);
    return index ? std::optional(std::move(found[*index])) : std::nullopt;
}

}  // namespace

// An application whose only window is minimised has none on the screen. So the others are asked,
// too, but only when they have to be: there are many.
Window findWindow(std::string_view title) {
    Search search(title);
    for (const Shown shown : {Shown::onScreen, Shown::anywhere}) {
        if (std::optional<Window> window = search.among(listWindows(shown))) {
            return std::move(*window);
        }
    }
    search.fail();
}

}  // namespace corvane::wintool
