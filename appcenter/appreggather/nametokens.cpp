#include "appcenter/appreggather/nametokens.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "appcenter/app/app.h"
#include "appcenter/appreggather/noisewords.h"
#include "utility/casemap.h"
#include "utility/flatmap.h"

namespace roundup {

namespace {

constexpr std::u16string_view kSeparators = u" _-\\/,";

// The queue of texts that are still to be split, and all that were ever seen.
//
// A text in the queue gives every part of it that begins or ends with it and is cut at a separator, and these parts are
// split in their turn, so that in the end there is each run of whole words. "Tool Box Pro" gives "Tool", "Box Pro",
// "Tool Box" and "Pro", and "Box Pro" then gives "Box". Each part lies inside one of the few texts that all began with,
// so parts are views, and the queue is the list of those seen with a place in it that moves on.
//
// A text of n words has n * n / 2 runs, and finding them means to look at some n times as many parts. What a name of
// thousands of words would cost is cut off by two budgets: characters of the parts that were looked at, and characters
// of the parts that are kept. Short parts come with the first text already, so a hostile name gets tokens as well.
class Splitter {
  public:
    // Enters the text and queues it, seen before or not.
    void Queue(std::u16string_view text) {
        if (m_index.TryAdd(text, 0).second) m_seen.push_back(text);
        m_queue.push_back(text);
    }
    void QueueNew(std::u16string_view text) {
        if (!m_index.TryAdd(text, 0).second) return;
        m_seen.push_back(text);
        m_queue.push_back(text);
    }
    bool Next(std::u16string_view& text) {
        if (m_next == m_queue.size()) return false;
        text = m_queue[m_next++];
        return true;
    }
    void Split(std::u16string_view text) {
        for (std::size_t at = text.find_first_of(kSeparators); at != text.npos;
             at = text.find_first_of(kSeparators, at + 1)) {
            if (!Part(text.substr(0, at)) || !Part(text.substr(at + 1))) return;
        }
    }
    // As Queue, within the budgets.
    void QueuePart(std::u16string_view text) {
        if (!Spend(text)) return;
        m_text += text.size();
        Queue(text);
    }
    const std::vector<std::u16string_view>& Seen() const noexcept { return m_seen; }

  private:
    bool Spend(std::u16string_view text) noexcept {
        m_work += text.size() + 1;
        return m_work <= kMostTokenWork && m_text <= kMostTokenText;
    }
    bool Part(std::u16string_view text) {
        if (!Spend(text)) return false;
        const std::size_t before = m_seen.size();
        QueueNew(text);
        if (m_seen.size() != before) m_text += text.size() + 1;
        return true;
    }

    FlatMap<std::u16string_view, char, NoCaseHash, NoCaseEqual> m_index;
    std::vector<std::u16string_view> m_seen;  // each once, in the order in which they came
    std::vector<std::u16string_view> m_queue;
    std::size_t m_next = 0;
    std::uint64_t m_work = 0;
    std::uint64_t m_text = 0;
};

// joined takes what has to live as long as the splitter.
void QueueName(std::u16string_view name, std::u16string& joined, Splitter& splitter) {
    const std::size_t cut = name.find(u'-');
    if (cut == name.npos) return splitter.Queue(name);
    std::ranges::remove_copy(name, std::back_inserter(joined), u'-');
    splitter.Queue(joined);
    splitter.Queue(name.substr(0, cut));
    splitter.Queue(name);
}

void AddToken(std::u16string_view text, std::vector<NameToken>& tokens) {
    NameToken token(text);
    if (!token.pwszText.IsNull()) tokens.push_back(std::move(token));
}

}  // namespace

bool BeginsWithPlatformMaker(std::u16string_view text) noexcept { return StartsWithNoCase(text, u"MicroSoft"); }

void TokeniseApp(const CApp& app, std::vector<NameToken>& tokens, std::uint32_t& bMicrosoft) {
    std::u16string joined;
    Splitter splitter;
    if (!app.pwszName.IsEmpty()) QueueName(app.pwszName, joined, splitter);
    if (!app.pwszKeyString.IsEmpty()) splitter.QueueNew(app.pwszKeyString);
    if (!app.pwszPublisher.IsEmpty()) splitter.QueueNew(app.pwszPublisher);

    for (std::u16string_view text; splitter.Next(text);) {
        if (bMicrosoft == 0 && BeginsWithPlatformMaker(text)) bMicrosoft = 1;
        if (!IsNoiseWord(text)) {
            AddToken(text, tokens);
            if (text.size() > 1 && text.front() == u'{' && text.back() == u'}') {
                splitter.QueuePart(text.substr(1, text.size() - 2));
            }
        }
        splitter.Split(text);
    }
    std::u16string dotted;
    for (const std::u16string_view text : splitter.Seen()) {
        dotted.assign(1, u'.').append(text);
        AddToken(dotted, tokens);
    }
}

}  // namespace roundup
