// Where the fields of an application come from.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "appcenter/app/app.h"
#include "platform/registry.h"

namespace roundup::host {

// The keys of one application, and what they say of its fields now. For people.
class FieldOrigins {
  public:
    explicit FieldOrigins(const CApp& app);

    // The keys, numbered, one line each.
    std::vector<std::string> Keys() const;
    // The values that the field (AppField::name) was read from, with the numbers of their keys, and with their text
    // where it is not that of the field, which may be cleaned, cut to a folder or narrowed. Without any, how it was
    // worked out.
    std::vector<std::string> Of(std::string_view field, const std::string& shown) const;

  private:
    struct Place {
        KeyHandle root;
        std::u16string path;
        bool view64;
    };

    void AddUninstallKeys(const CApp& app);
    void AddBooks(const CApp& app);

    std::vector<Place> m_places;
};

}  // namespace roundup::host
