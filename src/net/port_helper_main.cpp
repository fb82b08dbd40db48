// tidewell-upnp: puts one question to the router and says the answer on standard output, for port_forwarder.cpp, which
// starts it anew for each. The UPnP library blocks, cannot be stopped, and parses what strangers send with pointers; in
// a process of its own it can be killed at any moment, has its end set beforehand, and takes nothing down with it.
//
//   find [ADDRESS]                        device <own|foreign> TARGET URL   for each answer; with none: error CODE
//                                         ADDRESS, in 127.0.0.0/8, confines the search to the own machine
//   describe URL                          description CONTROL_URL SERVICE_TYPE   nothing if it could not be had
//   add CONTROL_URL SERVICE PORT ADDRESS  result CODE
//   delete CONTROL_URL SERVICE PORT       result CODE
//
// One line each, fields parted by tabs. All codes are the library's.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <miniupnpc/miniupnpc.h>
#include <miniupnpc/miniwget.h>
#include <miniupnpc/upnpcommands.h>

#include "net/limits.h"
#include "net/port_helper_gate.h"

namespace {

constexpr int c_searchMilliseconds = 2000;
constexpr unsigned char c_hops = 2;
constexpr int c_httpOk = 200;

// What a stranger wrote, as one field of a line.
std::string Field(const char* ip_text) {
    std::string l_field = ip_text ? ip_text : "";
    for (char& l_character : l_field) {
        if (static_cast<unsigned char>(l_character) < ' ')
            l_character = '?';
    }
    return l_field;
}

void Find(const char* ip_interface) {
    if (ip_interface)
        gate::AcceptOwnMachine();
    int l_error = UPNPDISCOVER_SUCCESS;
    // A null socket would stand for that of a local daemon, whose word about senders cannot be held against anything.
    UPNPDev* const lp_devices =
        upnpDiscover(c_searchMilliseconds, ip_interface, "", UPNP_LOCAL_PORT_ANY, 0, c_hops, &l_error);
    if (!lp_devices)
        std::printf("error\t%d\n", l_error);
    for (const UPNPDev* lp_device = lp_devices; lp_device; lp_device = lp_device->pNext)
        std::printf("device\t%s\t%s\t%s\n", gate::NamesItsSender(lp_device->descURL) ? "own" : "foreign",
                    Field(lp_device->st).c_str(), Field(lp_device->descURL).c_str());
    freeUPNPDevlist(lp_devices);
}

void Describe(const char* ip_url) {
    int l_size = 0;
    int l_status = 0;
    char* const lp_text = static_cast<char*>(miniwget(ip_url, &l_size, 0, &l_status));
    if (lp_text && l_status == c_httpOk && !gate::WasCutShort()) {
        IGDdatas l_data;
        UPNPUrls l_urls;
        std::memset(&l_data, 0, sizeof l_data);
        std::memset(&l_urls, 0, sizeof l_urls);
        parserootdesc(lp_text, l_size, &l_data);
        GetUPNPUrls(&l_urls, &l_data, ip_url, 0);
        std::printf("description\t%s\t%s\n", Field(l_urls.controlURL).c_str(), Field(l_data.first.servicetype).c_str());
        FreeUPNPUrls(&l_urls);
    }
    std::free(lp_text);
}

void Report(int i_result) {
    std::printf("result\t%d\n", gate::WasCutShort() ? UPNPCOMMAND_INVALID_RESPONSE : i_result);
}

} // namespace

int main(int i_count, char** ip_arguments) {
    // Nothing of the client's is kept open by a question that outlives it.
    closefrom(STDERR_FILENO + 1);
    alarm(limits::routerQuestionSeconds);
    const std::string l_question = i_count > 1 ? ip_arguments[1] : "";
    char** const lp_given = ip_arguments + 2;
    if (l_question == "find" && i_count <= 3)
        Find(i_count == 3 ? lp_given[0] : nullptr);
    else if (l_question == "describe" && i_count == 3)
        Describe(lp_given[0]);
    else if (l_question == "add" && i_count == 6)
        Report(UPNP_AddPortMapping(lp_given[0], lp_given[1], lp_given[2], lp_given[2], lp_given[3], "TidewellQT", "TCP",
                                   nullptr, nullptr));
    else if (l_question == "delete" && i_count == 5)
        Report(UPNP_DeletePortMapping(lp_given[0], lp_given[1], lp_given[2], "TCP", nullptr));
    else
        return EXIT_FAILURE;
    return EXIT_SUCCESS;
}
