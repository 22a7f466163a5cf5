#pragma once

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "TestHost.h"

inline constexpr const char* LOCK_FILE = "/var/run/liveimgdb.pid";
inline constexpr const char* PROFILE = "/var/db/nimbimg/profiles/profile";
inline constexpr const char* BREV_FOLDER = "/var/db/nimbimg/brevs/";

/// A host whose image database a test writes as text.
class ImageTest : public HostTest
{
protected:
    TestHost& WithProfile(const std::string& brevs)
    {
        return Host().WriteFile(PROFILE, "<imageprofile><brevlist>" + brevs + "</brevlist></imageprofile>");
    }

    /// A descriptor of vendor Acme, type bootbank, version 1.0 in the file NAME.xml.
    TestHost& WithDescriptor(const std::string& name, const std::string& tags = "")
    {
        return Host().WriteFile(BREV_FOLDER + name + ".xml", Descriptor(name, tags));
    }

    static std::string Descriptor(const std::string& name, const std::string& tags = "")
    {
        return "<?xml version=\"1.0\"?>\n<brev version=\"2.0\"><type>bootbank</type><name>" + name +
               "</name><version>1.0</version><vendor>Acme</vendor><software-tags>" + tags + "</software-tags></brev>\n";
    }

    static std::string Brev(const std::string& name, const std::vector<std::string>& payloads = {})
    {
        std::string text = "<brev><brev-id>Acme_bootbank_" + name + "_1.0</brev-id><payloads>";
        for (const std::string& payload : payloads) {
            text += "<payload>" + payload + "</payload>";
        }
        return text + "</payloads></brev>";
    }

    /// True when nobody holds the lock.
    bool IsUnlocked()
    {
        const int file = open(Host().Real(LOCK_FILE).c_str(), O_RDONLY);
        const bool unlocked = file < 0 || flock(file, LOCK_EX | LOCK_NB) == 0;
        close(file);
        return unlocked;
    }

    /// The descriptors that this process has open.
    static std::size_t OpenFiles()
    {
        std::size_t count = 0;
        DIR* folder = opendir("/proc/self/fd");
        while (readdir(folder) != nullptr) {
            ++count;
        }
        closedir(folder);
        return count;
    }
};
