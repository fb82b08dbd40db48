#include "sharing/sharing_fixture.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <map>

using testing::ElementsAre;
using testing::Pair;
using testing::UnorderedElementsAre;

namespace {

std::string Fixture(const char* i_name) {
    return std::string(TIDEWELL_AUDIO_FIXTURES) + "/" + i_name;
}

template <class Condition>
bool WaitFor(Condition i_condition) {
    const QDeadlineTimer l_deadline(30'000);
    while (!i_condition() && !l_deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    return i_condition();
}

// Of all files that were scanned.
std::map<std::string, std::vector<std::string>> AttributesByName() {
    std::map<std::string, std::vector<std::string>> l_attributes;
    for (Item* lp_file : g("is_scanned").GetItems("shared_file"))
        for (const char* l_type : {"mpeg_version", "channel_mode", "audio_frequency", "bitrate_mode", "bitrate"})
            l_attributes[lp_file->HasItem("shared_file_name").AsString()].push_back(
                lp_file->HasItem(l_type).AsString());
    return l_attributes;
}

class MP3Results : public SharingTest {
protected:
    TempTree m_tree;
};

} // namespace

TEST_F(MP3Results, BecomeItemsOfTheFilesWhateverTheirNames) {
    m_tree.Link("constant.mp3", Fixture("cbr_joint_44100.mp3"));
    m_tree.Folder("Gr\xC3\xBC\xC3\x9F"
                  "e");
    m_tree.Link("Gr\xC3\xBC\xC3\x9F"
                "e/\xC3\x84.MP3",
                Fixture("cbr_mono_22050.mp3"));
    m_tree.Link("bytes \xFF.mp3", Fixture("vbr_stereo_48000.mp3"));
    m_tree.Link("old.mp3", Fixture("mpeg25_8000.mp3"));
    m_tree.File("noise.mp3", 100'000);
    Share(m_tree.Path());

    EXPECT_TRUE(WaitFor([] { return AttributesByName().size() == 3; }));
    EXPECT_THAT(AttributesByName(),
                UnorderedElementsAre(Pair("constant.mp3", ElementsAre("1", "joint stereo", "0", "cbr", "128")),
                                     Pair("\xC3\x84.MP3", ElementsAre("2", "mono", "0", "cbr", "56")),
                                     Pair("bytes \xFF.mp3", ElementsAre("1", "stereo", "1", "vbr", "137"))));

    QSignalSpy l_spy(sharedFoldersManager, &SharedFoldersManager::MP3ScanRequired);
    Rescan();
    EXPECT_EQ(l_spy.size(), 2) << "the two without an answer are asked for again";
}

TEST_F(MP3Results, OfAFileThatLeftTheShareAreDropped) {
    for (const char* l_folder : {"gone", "stays"}) {
        m_tree.Folder(l_folder);
        m_tree.Link(std::string(l_folder) + "/a.mp3", Fixture("cbr_joint_44100.mp3"));
        Share(m_tree.Path(l_folder));
    }
    // The file can still be read, and no answer has been taken in yet. Answers keep the order of the requests.
    sharedFoldersManager->UnshareFolder(m_tree.Path("gone"));
    EXPECT_TRUE(WaitFor([] { return !AttributesByName().empty(); }));
    EXPECT_THAT(AttributesByName(), ElementsAre(Pair("a.mp3", ElementsAre("1", "joint stereo", "0", "cbr", "128"))));
    EXPECT_EQ(g("shared_file").size(), 1U);
}
