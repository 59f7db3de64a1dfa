// modemctl sms requeue and delete.
#include <cstdio>

#include "modemctl/exit_code.h"
#include "modemctl/json.h"
#include "modemctl/sms.h"
#include "modemctl/sms_drop.h"
#include "modemctl/unicode.h"

namespace modemctl {

namespace {

struct Change {
    std::string place;
    std::string name;
    std::string new_name;   // of a message that waits again
    std::string complaint;  // empty: done
};

int Tell(const Session& session, const char* word, const std::vector<Change>& changes) {
    JsonWriter json("modemctl.sms_change/1");
    json.Text("action", word);
    json.BeginArray("changes");
    int code = kGood;
    for (const Change& change : changes) {
        const bool done = change.complaint.empty();
        if (!done) code = kNotGood;
        if (session.json) {
            json.BeginElement();
            json.Text("place", change.place);
            json.Text("name", change.name);
            json.Bool("done", done);
            json.Text("complaint", change.complaint);
            if (!change.new_name.empty()) json.Text("new_name", change.new_name);
            json.End();
        } else if (done) {
            const std::string where =
                change.new_name.empty() ? "" : " as " + session.terminal.Show(change.new_name);
            Print(std::string(word) + "d " + session.terminal.Show(change.name) + where + "\n");
        } else {
            std::fprintf(stderr, "modemctl: %s: %s\n", Escaped(change.name, false).c_str(),
                         Escaped(change.complaint, false).c_str());
        }
    }
    if (session.json) Print(json.Finish() + "\n");
    return code;
}

// The entries that the arguments name; what is not there is a change that was not done.
std::vector<SpoolEntry> Named(const Session& session, std::vector<Change>& changes) {
    std::vector<SpoolEntry> entries;
    for (const std::string& typed : session.arguments) {
        SpoolEntry entry;
        Change change;
        if (FindEntry(session.tree, typed, entry, change.complaint)) {
            entries.push_back(entry);
            continue;
        }
        change.name = typed;
        changes.push_back(change);
    }
    return entries;
}

}  // namespace

int RunSmsRequeue(Session& session) {
    const bool all = session.Has("--all");
    if (all != session.arguments.empty()) {
        return UsageError("sms", "requeue wants either names or --all");
    }
    std::vector<Change> changes;
    std::vector<SpoolEntry> entries = Named(session, changes);
    if (all && !ListSpool(session.tree, SpoolPlace::kFailed, entries)) return kNoData;
    for (const SpoolEntry& entry : entries) {
        Change change;
        change.place = PlaceWord(entry.place);
        change.name = entry.name;
        change.complaint = RequeueFailed(entry, change.new_name);
        changes.push_back(change);
    }
    return Tell(session, "requeue", changes);
}

int RunSmsDelete(Session& session) {
    std::vector<Change> changes;
    for (const SpoolEntry& entry : Named(session, changes)) {
        Change change;
        change.place = PlaceWord(entry.place);
        change.name = entry.name;
        change.complaint = DeleteEntry(entry);
        changes.push_back(change);
    }
    return Tell(session, "delete", changes);
}

}  // namespace modemctl
