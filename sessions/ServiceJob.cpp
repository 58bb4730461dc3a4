#include "sessions/ServiceJob.h"

#include <string_view>

namespace velmo {

namespace {

constexpr std::string_view launchdLabel = "io.velmo.host.sessions";
constexpr std::string_view systemdUnit = "velmo-session.service";

std::string inXml(std::string_view text) {
    std::string escaped;
    for (const char each : text) {
        if (each == '&')
            escaped += "&amp;";
        else if (each == '<')
            escaped += "&lt;";
        else
            escaped += each;
    }
    return escaped;
}

/// Returns the text as one word of a unit's command line.
std::string inUnit(std::string_view text) {
    std::string quoted = "\"";
    for (const char each : text) {
        if (each == '"' || each == '\\')
            quoted += '\\';
        else if (each == '%' || each == '$')
            quoted += each;
        quoted += each;
    }
    return quoted + '"';
}

// A program that a person works with, "Interactive", is not slowed down as one in the background
// is.
std::string propertyList(const std::string& executable) {
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
    <key>Label</key>
    <string>)"
           + std::string(launchdLabel) + R"(</string>
    <key>ProgramArguments</key>
    <array>
        <string>)"
           + inXml(executable) + R"(</string>
        <string>serve</string>
    </array>
    <key>RunAtLoad</key>
    <true/>
    <key>KeepAlive</key>
    <dict>
        <key>SuccessfulExit</key>
        <false/>
    </dict>
    <key>LimitLoadToSessionType</key>
    <string>Background</string>
    <key>ProcessType</key>
    <string>Interactive</string>
</dict>
</plist>
)";
}

// Another host may serve for as long as it likes, so the attempts have no limit.
std::string unit(const std::string& executable) {
    return R"([Unit]
Description=Terminal sessions of velmo-session
StartLimitIntervalSec=0

[Service]
ExecStart=)"
           + inUnit(executable) + R"( serve
Restart=on-failure
RestartSec=10

[Install]
WantedBy=default.target
)";
}

} // namespace

ServiceJob launchdJob(const ServiceFacts& facts) {
    constexpr const char* launchctl = "/bin/launchctl";
    const std::string path =
        facts.home + "/Library/LaunchAgents/" + std::string(launchdLabel) + ".plist";
    const std::string domain = "user/" + std::to_string(facts.user);
    const std::string service = domain + "/" + std::string(launchdLabel);
    return {.path = path,
            .text = propertyList(facts.executable),
            .start = {{.words = {"/usr/bin/plutil", "-lint", "-s", path}},
                      {.words = {launchctl, "enable", service}},
                      {.words = {launchctl, "bootstrap", domain, path}}},
            .stop = {{.words = {launchctl, "bootout", service}, .mayFail = true}},
            .isLoaded = {.words = {launchctl, "print", service}}};
}

ServiceJob systemdJob(const ServiceFacts& facts) {
    const std::string name(systemdUnit);
    return {.path = facts.home + "/.config/systemd/user/" + name,
            .text = unit(facts.executable),
            .start = {{.words = {"systemctl", "--user", "daemon-reload"}},
                      {.words = {"systemctl", "--user", "enable", "--now", name}}},
            .stop = {{.words = {"systemctl", "--user", "disable", "--now", name}, .mayFail = true}},
            .isLoaded = {.words = {"systemctl", "--user", "is-enabled", "--quiet", name}}};
}

} // namespace velmo
