#include "world/client_process.h"
#include "world/conditions.h"
#include "world/sample_file.h"
#include "world/scripted_peer.h"

#include <gtest/gtest.h>

namespace {

void Refuse(PeerLink& io_link, const TransferRequest& i_offer) {
    TransferResponse l_answer;
    l_answer.token = i_offer.token;
    l_answer.reason = "Cancelled";
    io_link.Send(l_answer);
}

} // namespace

// The slot is held by one user while three others queue up; each of them then gives it back at once.
TEST(WorldUploadQueue, GoesByGroupThenPrivilegeThenArrival) {
    const ServerProcess l_server({QStringLiteral("--privileged"), QStringLiteral("privileged")});
    const ClientHome l_home(QStringLiteral("source"), l_server.Port());
    const QString l_file = l_home.Path(QStringLiteral("shared/song.bin"));
    WriteSampleFile(l_file, 1000, 1);
    l_home.Edit(QStringLiteral("share"), {l_home.Path(QStringLiteral("shared")), QStringLiteral("public")});
    l_home.Edit(QStringLiteral("friend"), {QStringLiteral("grouped"), QStringLiteral("friends")});
    DrivenClient l_source(l_home);
    l_source.AwaitConnected();
    l_source.Do({QStringLiteral("priority"), QStringLiteral("friends"), QStringLiteral("1")});

    ConnectedPeer l_holder("holder", l_server.Port(), l_home.Port());
    ConnectedPeer l_first("first", l_server.Port(), l_home.Port());
    ConnectedPeer l_privileged("privileged", l_server.Port(), l_home.Port());
    ConnectedPeer l_grouped("grouped", l_server.Port(), l_home.Port());

    l_holder.link.Send(QueueUpload{l_file.toStdString()});
    const auto l_held = l_holder.link.Await<TransferRequest>();
    ASSERT_TRUE(l_held);
    int l_queued = 1;
    for (ConnectedPeer* lp_asker : {&l_first, &l_privileged, &l_grouped}) {
        lp_asker->link.Send(QueueUpload{l_file.toStdString()});
        ++l_queued;
        EXPECT_TRUE(WaitUntil([&] { return l_source.Items("upload_entry").size() == l_queued; }));
        l_source.AwaitOnline(QString::fromStdString(lp_asker->peer.User()));
    }

    Refuse(l_holder.link, *l_held);
    for (ConnectedPeer* lp_asker : {&l_grouped, &l_privileged, &l_first}) {
        const auto l_offer = lp_asker->link.Await<TransferRequest>();
        ASSERT_TRUE(l_offer) << lp_asker->peer.User();
        // One slot: nobody else has an offer yet.
        int l_requesting = 0;
        for (const QJsonValue& l_entry : l_source.Items("upload_entry"))
            l_requesting += Neighbour(l_entry.toObject(), "upload_entry_status") == QStringLiteral("requesting");
        EXPECT_EQ(l_requesting, 1);
        Refuse(lp_asker->link, *l_offer);
    }
}
