// The stored voices answer as long as this object lives, whatever is played live: for exports.

#pragma once

#include "harmony/choir_driver.h"

namespace sonorelle {

class LiveBypass {
public:
    explicit LiveBypass(CChoirDriver& choirDriver) : driver(choirDriver) { driver.SetLiveBypass(true); }
    ~LiveBypass() { driver.SetLiveBypass(false); }
    LiveBypass(const LiveBypass&) = delete;
    LiveBypass& operator=(const LiveBypass&) = delete;

private:
    CChoirDriver& driver;
};

} // namespace sonorelle
