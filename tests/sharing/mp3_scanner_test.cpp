#include "sharing/mp3_scanner.h"

#include "sharing/mp3_votes.h"
#include "sharing/temp_tree.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>

#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include <sys/stat.h>

namespace {

std::string Fixture(const char* i_name) {
    return std::string(TIDEWELL_AUDIO_FIXTURES) + "/" + i_name;
}

struct Scanned {
    int version;
    std::string channels;
    int frequency;
    bool vbr;
    int bitrate;

    bool operator==(const Scanned&) const = default;
};

std::optional<Scanned> Scan(MP3Scanner& io_scanner, const std::string& i_path) {
    Scanned l_result;
    if (!io_scanner.ScanMP3(i_path, l_result.version, l_result.channels, l_result.frequency, l_result.vbr,
                            l_result.bitrate))
        return std::nullopt;
    return l_result;
}

} // namespace

TEST(MP3Scanner, ReadsWhatTheEncoderWasTold) {
    MP3Scanner l_scanner;
    EXPECT_EQ(Scan(l_scanner, Fixture("cbr_joint_44100.mp3")), (Scanned{1, "joint stereo", 0, false, 128}));
    EXPECT_EQ(Scan(l_scanner, Fixture("cbr_dual_crc_32000.mp3")), (Scanned{1, "dual mono", 2, false, 64}));
    EXPECT_EQ(Scan(l_scanner, Fixture("cbr_mono_22050.mp3")), (Scanned{2, "mono", 0, false, 56}));
    EXPECT_EQ(Scan(l_scanner, Fixture("vbr_stereo_48000.mp3")), (Scanned{1, "stereo", 1, true, 137}));
    EXPECT_EQ(Scan(l_scanner, Fixture("mpeg25_8000.mp3")), std::nullopt);
}

TEST(MP3Scanner, RefusesWhatIsNoReadableFileAndNeverWaitsForIt) {
    TempTree l_tree;
    l_tree.File("empty.mp3");
    l_tree.File("noise.mp3", 300'000);
    l_tree.Folder("folder.mp3");
    l_tree.Link("link.mp3", Fixture("cbr_mono_22050.mp3"));
    ASSERT_EQ(mkfifo(l_tree.Path("fifo.mp3").c_str(), 0600), 0);

    MP3Scanner l_scanner;
    for (const char* l_name : {"empty.mp3", "noise.mp3", "folder.mp3", "fifo.mp3", "missing.mp3"})
        EXPECT_EQ(Scan(l_scanner, l_tree.Path(l_name)), std::nullopt) << l_name;
    EXPECT_EQ(Scan(l_scanner, "/dev/zero"), std::nullopt);
    EXPECT_TRUE(Scan(l_scanner, l_tree.Path("link.mp3")));
}

TEST(MP3Scanner, CutsTheFileIntoBlocks) {
    TempTree l_tree;
    const std::string l_header = "\xFF\xFB\x90\x40_"; // 128 kbit/s, joint stereo
    for (const std::size_t l_fromEdge : {4, 5}) {
        std::ofstream(l_tree.Path("long.mp3"), std::ios::binary)
            << std::string(3 * MP3Votes::blockSize - l_fromEdge, 'x') << l_header << std::string(20, 'x');
        MP3Scanner l_scanner;
        EXPECT_EQ(Scan(l_scanner, l_tree.Path("long.mp3")).has_value(), l_fromEdge == 5);
    }
}

TEST(MP3Scanner, AnswersInOrderFromItsThreadUntilItQuits) {
    TempTree l_tree;
    const std::vector<std::string> l_names = {"a.mp3",
                                              "Gr\xC3\xBC\xC3\x9F"
                                              "e.mp3",
                                              "not utf8 \xFC.mp3"};
    for (const std::string& l_name : l_names)
        l_tree.Link(l_name, Fixture("vbr_stereo_48000.mp3"));

    QThread l_thread;
    MP3Scanner l_scanner;
    l_scanner.moveToThread(&l_thread);
    QObject l_receiver;
    std::vector<std::string> l_paths;
    QObject::connect(&l_scanner, &MP3Scanner::MP3Scanned, &l_receiver,
                     [&](QString i_path, int i_version, QString i_channels, int i_frequency, bool i_vbr, int i_rate) {
                         EXPECT_EQ((Scanned{i_version, i_channels.toStdString(), i_frequency, i_vbr, i_rate}),
                                   (Scanned{1, "stereo", 1, true, 137}));
                         l_paths.push_back(i_path.toLatin1().toStdString());
                     });
    const auto l_request = [&](const std::string& i_path) {
        QMetaObject::invokeMethod(&l_scanner,
                                  [&l_scanner, i_path] { l_scanner.OnMP3ScanRequired(QString::fromLatin1(i_path)); });
    };

    l_request(l_tree.Path("missing.mp3"));
    for (const std::string& l_name : l_names)
        l_request(l_tree.Path(l_name));
    l_thread.start();
    const QDeadlineTimer l_deadline(30'000);
    while (l_paths.size() < l_names.size() && !l_deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    EXPECT_EQ(l_paths,
              (std::vector<std::string>{l_tree.Path(l_names[0]), l_tree.Path(l_names[1]), l_tree.Path(l_names[2])}));

    l_scanner.Quit();
    l_request(l_tree.Path(l_names[0]));
    QMetaObject::invokeMethod(&l_scanner, [&l_thread] { l_thread.quit(); });
    EXPECT_TRUE(l_thread.wait(30'000));
    QCoreApplication::processEvents();
    EXPECT_EQ(l_paths.size(), l_names.size());
}
