/// Both ends of a ticket: the host writes one for a terminal session, and the attach client, which
/// a terminal window runs, opens it and greets the host.

#include "core/terminal/PtyAttach.h"
#include "platform/host/PtyAttachHostFileSystem.h"

#include <filesystem>
#include <fstream>
#include <iostream>

using namespace velmo;
namespace fs = std::filesystem;

namespace {

const std::string name = "a-00112233445566778899aabbccddeeff.json"; // in truth at random

/// Writes a ticket where only this user can read it, and returns the ticket's path.
std::string writeTicket(const fs::path& folder) {
    fs::create_directories(folder);
    fs::permissions(folder, fs::perms::owner_all);
    const PtyAttach::Ticket ticket{.endpoint = (folder / PtyAttach::socketName).string(),
                                   .token = std::string(43, 't'), // in truth at random
                                   .session = "s_0123456789abcdef"};
    std::ofstream(folder / name) << encodeJson(ticket).value();
    fs::permissions(folder / name, fs::perms::owner_read | fs::perms::owner_write);
    return (folder / name).string();
}

/// Does what the attach client does until it is connected.
int attach(const std::vector<std::string>& words, PtyAttach::FileSystem& files) {
    const auto arguments = PtyAttach::parseArguments(words);
    const auto* asked = arguments ? std::get_if<PtyAttach::TicketArguments>(&*arguments) : nullptr;
    if (asked == nullptr)
        return 64;
    const auto ticket = PtyAttach::readTicket(asked->path, files); // and removes it
    if (!ticket) {
        std::cout << PtyAttach::message(ticket.error()) << '\n';
        return 1;
    }
    const auto hello = PtyAttach::hello(ticket->token, 80, 24);
    std::cout << "joins " << ticket->session << " by " << fs::path(ticket->endpoint).filename()
              << " with a greeting of " << hello->size() << " bytes\n";
    return 0;
}

} // namespace

int main() {
    PtyAttach::HostFileSystem files;
    if (const auto above = files.userTempDir())
        fs::create_directories(*above); // which is not there yet on a new Linux
    const auto folder = PtyAttach::expectedFolder(files);
    if (!folder) {
        std::cerr << "the system gives this user no folder of their own for such files\n";
        return 1;
    }
    const std::string ticket = writeTicket(*folder);
    const std::vector<std::string> words{std::string(PtyAttach::ticketOption), ticket};
    attach(words, files);
    attach(words, files); // fails: a ticket works once
}
