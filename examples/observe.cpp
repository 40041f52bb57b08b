#include <iostream>
#include <memory>

#include "art-cpp/Activity.h"
#include "metrics2/Metrics.h"
#include "vancoreplatform/VLog.h"
#include "vancorexml/main/parser/DOMParser.h"

// Receives what the library logs, traces and measures. The library calls all sinks one at a time, on the threads that
// do the work.
class Observer : public VLog::Sink, public art::ActivitySink, public Metrics::Sink {
public:
    void Write(const VLog::Record& record) override { std::cout << "log: " << record.message << "\n"; }

    void Finish(const art::ActivityRecord& record) override
    {
        std::cout << "activity: " << record.name;
        for (const auto& [key, value] : record.tags)
            std::cout << " " << key << "=" << value;
        std::cout << "\n";
    }

    void Finish(const Metrics::ScopeRecord& record) override
    {
        std::cout << "metrics: " << record.name << "\n";
        busy += record.nanoseconds;
    }

    std::uint64_t busy = 0;  // in nanoseconds; inner scopes count twice
};

int main()
{
    const auto observer = std::make_shared<Observer>();
    VLog::SetSink(observer);
    art::SetActivitySink(observer);
    Metrics::SetSink(observer);

    {
        art::Activity activity("shop.open");  // the program's own work
        activity.Tag("day", "Monday");
        const auto shop = DOMParser().ParseXmlString("<shop><tea/><milk/></shop>", "shop.xml");
        shop->GetDocumentRoot()->GetChild("tea")->MoveToFront();  // it is the first child already
    }

    // With null, messages go to Qt's log again, and tracing and measuring cost one atomic load each.
    VLog::SetSink(nullptr);
    art::SetActivitySink(nullptr);
    Metrics::SetSink(nullptr);
    std::cout << (observer->busy > 0 ? "some time was measured\n" : "no time was measured\n");
}
