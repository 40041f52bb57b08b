#include "vanxml/TraceFile.h"

#include <CLI/CLI.hpp>

#include <QCoreApplication>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "art-cpp/Activity.h"
#include "metrics2/Metrics.h"
#include "vancoreplatform/FileReplacement.h"
#include "vancoreplatform/VFile.h"
#include "vanxml/ExceptionText.h"
#include "vanxml/JsonText.h"
#include "vanxml/OperatingSystem.h"
#include "vanxml/StandardStreams.h"
#include "vanxml/ToolError.h"

namespace {

constexpr std::string_view traceStart = "{\"traceEvents\":[";
constexpr std::size_t pieceSize = 65536;

std::uint64_t TraceNow()
{
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(sinceStart).count());
}

// Refuses a document that the user named by mistake, as in "--trace a.xml b.xml" and "-o a.xml --trace a.xml".
void RequireReplaceable(const VString& name)
{
    const std::filesystem::path path(name.View());
    if (OperatingSystem::TypeOf(path) != std::filesystem::file_type::regular)
        return;
    VFile file{VPath(name)};
    file.OpenForReading();
    char start[traceStart.size()] = {};
    const std::size_t size = file.Read(start, sizeof start);
    if (size > 0 && std::string_view(start, size) != traceStart)
        throw ToolError("--trace: the file '" + name.toStdString() + "' exists and is not a trace");
}

// Returns a time in microseconds, such as "12.345".
std::string ToMicroseconds(std::uint64_t nanoseconds)
{
    char text[32] = {};
    std::snprintf(text,
        sizeof text,
        "%llu.%03u",
        static_cast<unsigned long long>(nanoseconds / 1000),
        static_cast<unsigned>(nanoseconds % 1000));
    return text;
}

}  // namespace

// The library calls all sinks one at a time, so this class needs no lock.
class TraceFile::Sink final : public art::ActivitySink, public Metrics::Sink {
public:
    explicit Sink(const VString& name) : m_name(name), m_start(TraceNow()), m_file(VPath(name)) {}

    void Finish(const art::ActivityRecord& record) override
    {
        AddEvent(record.name, "activity", record.start, record.nanoseconds, record.tags);
    }

    void Finish(const Metrics::ScopeRecord& record) override
    {
        AddEvent(record.name, "metrics", record.start, record.nanoseconds, record.values);
    }

    void Close()
    {
        RequireReplaceable(m_name);  // again, because the command may have written its output there
        m_text += "\n]}\n";
        m_file.Write(m_text);
        m_file.Commit();
    }

private:
    void AddEvent(const char* name,
        const char* category,
        std::uint64_t start,
        std::uint64_t nanoseconds,
        const std::vector<std::pair<VString, VString>>& values)
    {
        const std::string thread = std::to_string(NumberOfThread());
        std::string event = "{\"name\":";
        AppendJsonString(event, name);
        event += ",\"cat\":\"" + std::string(category) + "\",\"ph\":\"X\",\"ts\":" + ToMicroseconds(start - m_start) +
            ",\"dur\":" + ToMicroseconds(nanoseconds) + ",\"pid\":" + m_process + ",\"tid\":" + thread + ",\"args\":{";
        const std::size_t before = event.size();
        for (const auto& [key, value] : values) {
            if (event.size() > before)
                event += ',';
            AppendJsonString(event, key.toStdString());
            event += ':';
            AppendJsonString(event, value.toStdString());
        }
        Append(event + "}}");
    }

    std::size_t NumberOfThread()
    {
        const auto [thread, isNew] = m_threads.try_emplace(std::this_thread::get_id(), m_threads.size() + 1);
        if (isNew) {
            const std::string number = std::to_string(thread->second);
            Append("{\"name\":\"thread_name\",\"ph\":\"M\",\"pid\":" + m_process + ",\"tid\":" + number +
                ",\"args\":{\"name\":\"thread " + number + "\"}}");
        }
        return thread->second;
    }

    // An exception leaves the text unchanged, or the file failed, and then Close fails too.
    void Append(const std::string& event)
    {
        m_text.reserve(m_text.size() + event.size() + 2);
        m_text += m_hasEvents ? ",\n" : "\n";
        m_text += event;
        m_hasEvents = true;
        if (m_text.size() < pieceSize)
            return;
        const std::string piece = std::exchange(m_text, std::string());
        m_file.Write(piece);
    }

    const VString m_name;
    const std::uint64_t m_start;
    const std::string m_process = std::to_string(QCoreApplication::applicationPid());
    FileReplacement m_file;
    std::string m_text{traceStart};  // not yet written
    bool m_hasEvents = false;
    std::map<std::thread::id, std::size_t> m_threads;
};

TraceFile::TraceFile(const VString& name)
{
    RequireReplaceable(name);
    m_sink = std::make_shared<Sink>(name);
    art::SetActivitySink(m_sink);
    Metrics::SetSink(m_sink, ~std::uint64_t{0});
}

TraceFile::~TraceFile()
{
    art::SetActivitySink(nullptr);
    Metrics::SetSink(nullptr);
}

void TraceFile::Finish()
{
    art::SetActivitySink(nullptr);
    Metrics::SetSink(nullptr);
    m_sink->Close();
}

void AddTraceOption(CLI::App& application, std::optional<std::string>& file)
{
    const std::vector<CLI::App*> commands = application.get_subcommands([](const CLI::App*) { return true; });
    for (CLI::App* command : commands)
        AddTraceOption(*command, file);
    if (!commands.empty())
        return;
    application
        .add_option("--trace",
            file,
            "Write the times of all steps to FILE, as JSON for the trace viewers of browsers (Chrome trace events)")
        ->type_name("FILE");
}

ExitStatus RunTraced(
    const std::optional<std::string>& file, const std::string& command, const std::function<ExitStatus()>& run)
{
    if (!file)
        return run();
    if (file->empty() || *file == "-")
        throw UsageError("--trace needs the name of a file");
    TraceFile trace(VString::fromStdString(*file));
    ExitStatus status = ExitStatus::Failed;
    try {
        art::Activity activity("vanxml");
        activity.Tag("command", VString::fromStdString(command));
        status = run();
    } catch (...) {
        try {
            trace.Finish();
        } catch (...) {
            StandardStreams::WriteError(ReportException(VString()).lines);
        }
        throw;
    }
    trace.Finish();
    return status;
}
