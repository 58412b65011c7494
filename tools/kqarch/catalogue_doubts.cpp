#include <algorithm>

#include "catalogue.h"
#include "text.h"

namespace {

constexpr doubt_entry doubt_entries[] = {
    {"absent-file", "There is no kqarch.ini.",
     "The server creates it empty, and archives nothing until a destination is added."},
    {"absent-directory", "The directory of a destination does not exist.",
     "The server creates it at its start. Look whether the path is spelt as it was meant."},
    {"no-instance", "What was given is not the configuration directory of an instance.",
     "Give the directory that holds kq.ini and kqarch.ini."},
    {"instance-without-destination", "An instance of kqmal.ini is no destination.",
     "Add a destination for the instance if it is to receive archives."},
    {"lost-text", "kqarch.ini is empty or cut short, as an interrupted write leaves it.",
     "Bring a backup back with `kqarch restore`."},
    {"nothing-archived", "Archiving is on, and there is no destination.",
     "Add a LOCAL destination, or set ARCH_FLAG = 0 in kq.ini."},
    {"relative-directory", "A directory depends on where the server is started.",
     "Write the whole path, from / on, without quotes."},
    {"same-directory", "Two destinations are the same directory under different names.",
     "Give each destination a directory of its own."},
    {"key-twice", "A key stands twice in a section, and the last one counts.",
     "Remove one of the two lines."},
    {"not-writable", "The owner of kqarch.ini may not write it.",
     "Let the server's user write it: online changes fail."},
    {"writable-by-others", "Others than the owner of kqarch.ini may write it.",
     "Who writes it says where archives go: give it mode 600."},
    {"readable-by-others", "kqarch.ini names a subscriber, and others than its owner may read it.",
     "They may read the subscriber's password: give it, and its backups, mode 600."},
    {"other-user", "The check ran with the rights of another user than the server's.",
     "Check as the user that the server runs as."},
    {"left-out", "A file has more findings than are shown.",
     "Correct those that are shown, and check again."},
    {"other", "Something else is wrong.", "See the message."},
};

}  // namespace

std::span<const doubt_entry> all_doubts() {
    return doubt_entries;
}

const doubt_entry* find_doubt(std::string_view name) {
    auto found = std::ranges::find_if(
        doubt_entries, [name](const doubt_entry& entry) { return same_text(entry.name, name); });
    return found != std::end(doubt_entries) ? found : nullptr;
}
