#include "benchmarks/peers/Peer.h"

std::vector<std::unique_ptr<Peer>> MakePeers(const std::string& name)
{
    std::vector<std::unique_ptr<Peer>> peers;
    peers.push_back(MakeVancoreXmlPeer());
    peers.push_back(MakeXercesSaxPeer());
    peers.push_back(MakeXercesDomPeer());
    peers.push_back(MakeQtPeer());
    peers.push_back(MakeLibxmlPeer());
    peers.push_back(MakeTinyxmlPeer());
    peers.push_back(MakePugixmlPeer());
    if (!name.empty())
        std::erase_if(peers, [&name](const std::unique_ptr<Peer>& peer) { return peer->Name() != name; });
    return peers;
}
