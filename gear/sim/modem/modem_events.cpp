// What happens to the modem, rather than what the host asks of it: changes of the radio, messages
// that arrive, the drive through town, the plug.
#include <algorithm>

#include "sim/control/control.h"
#include "sim/modem/modem.h"

namespace sim {

std::string Modem::Control(std::string_view line, Micros now) {
    Advance(now);
    return ControlLanguage(this).Run(line);
}

Modem::Announced Modem::Now() const {
    return {static_cast<int>(state_.radio.registration), state_.radio.lac, state_.radio.cell,
            state_.radio.csq};
}

void Modem::Changed() {
    const Announced before = announced_;
    announced_ = Now();
    const bool moved = before.lac != announced_.lac || before.cell != announced_.cell;
    const bool registered = before.registration != announced_.registration;
    AnnounceRegistration("+CREG", state_.modes.creg, registered, moved);
    AnnounceRegistration("+CGREG", state_.modes.cgreg, registered, moved);
    AnnounceRegistration("+CEREG", state_.modes.cereg, registered, moved);
    if (state_.IsOn("speak-up") && before.csq != announced_.csq) {
        SendUnsolicited("^RSSI: " + std::to_string(announced_.csq));
    }
    state_.call.ServiceChanged(state_.radio.HasService(), state_.now);
}

void Modem::AnnounceRegistration(const char* name, int mode, bool registered, bool moved) {
    if (mode == 0 || !(registered || (mode == 2 && moved))) return;
    const Radio& radio = state_.radio;
    std::string line = Print("%s: %d", name, announced_.registration);
    if (mode == 2 && radio.IsRegistered()) {
        line += Print(",\"%04X\",\"%08X\"", radio.lac, radio.cell);
    }
    SendUnsolicited(line);
}

// What the host has chosen is forgotten; what a modem keeps in its flash stays.
void Modem::PowerOn() {
    state_.restart_wanted = false;
    state_.modes = Modes();
    state_.powered_at = state_.now;
    state_.call.Drop(kEndedByClient, state_.now);
    reader_.Reset();
    pending_.reset();
    input_.clear();
    held_.clear();
    announced_ = Now();
}

void Modem::Unplug() {
    plugged_ = false;
    output_.clear();
    state_.call.Drop(kEndedByClient, state_.now);
}

void Modem::Plug() {
    if (plugged_) return;
    plugged_ = true;
    silent_until_ = 0;
    PowerOn();
}

void Modem::ReceiveSms(const std::string& from, const std::string& text) {
    const int index =
        state_.sms.Deliver({SmsState::kUnread, from, state_.clock.Stamp(state_.now), text});
    if (index > 0 && state_.modes.cnmi == 1) {
        SendUnsolicited("+CMTI: \"SM\"," + std::to_string(index));
    }
}

void Modem::StartDrive(bool on) {
    driving_ = on && !profile_.drive.empty();
    drive_started_ = state_.now;
    drive_step_ = 0;
}

void Modem::RunDriveStep() {
    const DriveStep& step = profile_.drive[drive_step_];
    ++drive_step_;
    if (step.control == "repeat") {
        StartDrive(true);
        return;
    }
    driving_ = drive_step_ < profile_.drive.size();
    // A step that turns the drive itself on or off has the last word.
    ControlLanguage(this).Run(step.control);
}

}  // namespace sim
