#pragma once

#include <string>
#include <vector>

namespace velmo {

/// What a service needs to know of its user. Both paths are absolute, in UTF-8 and without control
/// characters.
struct ServiceFacts {
    std::string home;
    std::string executable; ///< velmo-session's
    unsigned user = 0;      ///< the user id
};

/// How a session host becomes a service of one user: the system starts the host when the user logs
/// in, and again after a crash, and keeps it when a terminal application quits.
struct ServiceJob {
    struct Command {
        std::vector<std::string> words{};
        bool mayFail = false; ///< it undoes what may not have been done

        bool operator==(const Command&) const = default;
    };

    std::string path; ///< of the file that describes the service to the system
    std::string text; ///< the file's content
    std::vector<Command> start;
    std::vector<Command> stop; ///< also before another start
    Command isLoaded;          ///< succeeds while the system has the service

    bool operator==(const ServiceJob&) const = default;
};

/// Returns the job for launchd, as launchd.plist(5) and launchctl(1) describe it. The job runs in
/// the user's own domain, which may exist while the user is not logged in at the screen.
ServiceJob launchdJob(const ServiceFacts& facts);

/// Returns the job for systemd, as systemd.service(5) and systemctl(1) describe it.
ServiceJob systemdJob(const ServiceFacts& facts);

} // namespace velmo
