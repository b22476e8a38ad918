// The window behind the logo: what this is, and which version. Where there is a page that tells of newer
// versions, a button opens it.
//
// Threads: within a ToolkitScope.

#pragma once

#include "ui/dialog.h"

#include <string>

namespace sonorelle {

inline constexpr const char* kUpdateTip = "check if there are any updates available";

class CkvoInfoWindow final : public CkvoDialog {
public:
    CkvoInfoWindow(const std::string& version, std::string updateAddress);
    bool HasUpdateButton() const { return !address.empty(); }

protected:
    void draw() override;

private:
    std::string version;
    std::string address;
};

} // namespace sonorelle
