// The key/value store behind the configuration file and the registry files: plain text files of
// key=value lines, and look-ups with a type and a default.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace corvane {

/// `c` in lower case; only ASCII letters change.
char charToLower(char c);

/// A copy of `text` with every character passed through charToLower().
std::string tolower(const std::string& text);

/// Orders strings by their lower-case forms.
struct less_string_ci {
    bool operator()(const std::string& a, const std::string& b) const;
};

/// Where a Properties keeps its entries: one value per key; setting an existing key replaces its
/// value and keeps the key as it was first spelled.
class Map {
  public:
    Map() = default;
    virtual ~Map() = default;
    Map(const Map&) = delete;
    Map& operator=(const Map&) = delete;
    Map(Map&&) = delete;
    Map& operator=(Map&&) = delete;

    /// The characters of the value, or null when the key is absent.
    virtual const char* getProperty(const std::string& key) const = 0;
    virtual void setProperty(const std::string& key, const std::string& value) = 0;
    virtual void clear() = 0;
};

/// A Map on an ordered map with the given order of keys.
template <typename Less>
class OrderedMap : public Map {
  public:
    const char* getProperty(const std::string& key) const override {
        const auto found = entries_.find(key);
        return found == entries_.end() ? nullptr : found->second.c_str();
    }
    void setProperty(const std::string& key, const std::string& value) override {
        last_ = entries_.insert_or_assign(last_, key, value);
        ++last_;
    }
    void clear() override {
        entries_.clear();
        last_ = entries_.end();
    }

  private:
    using Entries = std::map<std::string, std::string, Less>;

    Entries entries_;
    /// Behind the entry that was set last: files are often sorted.
    typename Entries::iterator last_ = entries_.end();
};

/// MapCS is a provided interface: the program itself has no store whose keys keep their case apart.
using MapCS = OrderedMap<std::less<std::string>>;
using MapCI = OrderedMap<less_string_ci>;

class Properties {
  public:
    explicit Properties(bool caseSensitive);
    virtual ~Properties() = default;
    Properties(const Properties&) = delete;
    Properties& operator=(const Properties&) = delete;
    Properties(Properties&&) = delete;
    Properties& operator=(Properties&&) = delete;

    /// Adds the entries of a file. A line is at most 1023 characters long: a longer one ends the
    /// loading without a word. Blanks at both ends of a line are dropped, empty lines and lines
    /// that begin with "#" are skipped, and so are lines without "="; the key is all before the
    /// first "=", the value all after it. Throws FileNotFoundException when the file cannot be
    /// opened, or is a pipe, and changes nothing then; "read file '%s' error" (EINTR) when the
    /// program has to stop meanwhile.
    void load(const std::string& path);

    const char* getProperty(const std::string& key) const { return map_->getProperty(key); }
    void setProperty(const std::string& key, const std::string& value) {
        map_->setProperty(key, value);
    }
    void clear() { map_->clear(); }

    /// The value, which may be empty, or `def` when the key is absent.
    std::string getPropertyAsString(const std::string& key, const std::string& def) const;
    std::string getString(const std::string& key, const std::string& def) const;

    /// 1 and 0 for exactly "true" and "false", else the decimal number that the value begins with,
    /// at most the limits of int; `def` without a digit or without the key.
    int getInt(const std::string& key, int def) const;
    bool getBool(const std::string& key, bool def) const;

    /// These store text; a provided interface that the program itself does not call.
    void setInt(const std::string& key, int value);
    void setBool(const std::string& key, bool value);

  private:
    void storeLine(std::string_view line);

    std::unique_ptr<Map> map_;
};

/// The configuration of the process; keys match in any letter case.
extern Properties props;

}  // namespace corvane
