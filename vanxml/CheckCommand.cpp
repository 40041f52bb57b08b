#include "vanxml/CheckCommand.h"

#include <CLI/CLI.hpp>

#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>

#include "vanxml/DocumentChecker.h"
#include "vanxml/StandardStreams.h"

namespace {

// Checks documents on several threads and returns the results in the order of the documents.
class CheckQueue {
public:
    CheckQueue(const std::vector<std::string>& files, const std::optional<SchemaReference>& schema, std::size_t jobs)
        : m_files(files),
          m_schema(schema),
          m_results(files.size())
    {
        try {
            for (std::size_t i = 0; i < std::min(jobs, files.size()); ++i)
                m_threads.emplace_back([this] { CheckNextDocuments(); });
        } catch (const std::system_error&) {
            // The system refuses to create more threads. The existing ones do all the work, or this thread does it if
            // there are none.
            if (m_threads.empty())
                CheckNextDocuments();
        }
    }

    ~CheckQueue()
    {
        m_next = m_files.size();
        for (std::thread& thread : m_threads)
            thread.join();
    }

    // Waits for the result of a document, by its index, and returns it. Call it once for each document. Rethrows the
    // exception that ended a thread.
    CheckedDocument WaitFor(std::size_t number)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_finished.wait(lock, [&] { return m_results[number] || m_failure; });
        if (!m_results[number])
            std::rethrow_exception(m_failure);
        CheckedDocument result = std::move(*m_results[number]);
        m_results[number].reset();
        return result;
    }

private:
    void CheckNextDocuments()
    {
        try {
            DocumentChecker checker(m_schema);
            for (std::size_t number = m_next++; number < m_files.size(); number = m_next++)
                Finish(number, checker.Check(VString::fromStdString(m_files[number])));
        } catch (...) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_failure = std::current_exception();
            m_finished.notify_all();
        }
    }

    void Finish(std::size_t number, CheckedDocument&& result)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_results[number] = std::move(result);
        m_finished.notify_all();
    }

    const std::vector<std::string>& m_files;
    const std::optional<SchemaReference> m_schema;
    std::atomic<std::size_t> m_next{0};
    std::vector<std::thread> m_threads;

    std::mutex m_mutex;
    std::condition_variable m_finished;
    std::vector<std::optional<CheckedDocument>> m_results;  // guarded by m_mutex
    std::exception_ptr m_failure;                           // guarded by m_mutex
};

std::string FormatCount(std::size_t count, const char* what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

// Returns nothing for "auto": the type and version of each document then select its schema.
std::optional<SchemaReference> ResolveSchemaOption(const std::string& name)
{
    if (name == "auto")
        return std::nullopt;
    return name == "none" ? SchemaReference() : FindSchema(VString::fromStdString(name));
}

}  // namespace

void CheckCommand::AddTo(CLI::App& application)
{
    CLI::App* command = application.add_subcommand("check", "Parse documents and print their errors");
    command->add_option("FILE", m_files, "The documents; - is standard input")->required();
    command
        ->add_option("--schema",
            m_schema,
            "The schema to check against: none for no schema; auto for the schema of each document's type and version; "
            "the name of a schema of the library; or a schema file")
        ->capture_default_str()
        ->type_name("auto|none|NAME|FILE.xsd");
    command
        ->add_option("--jobs",
            m_jobs,
            "The number of documents to check at the same time; the default is the number of the machine's cores")
        ->check(CLI::Range(1u, 1024u))
        ->type_name("N");
    command->callback([this] {
        if (std::count(m_files.begin(), m_files.end(), "-") > 1)
            throw CLI::ValidationError("FILE", "standard input can be read only once");
    });
    m_command = command;
}

bool CheckCommand::IsChosen() const
{
    return m_command->parsed();
}

ExitStatus CheckCommand::Run()
{
    const std::size_t jobs = m_jobs > 0 ? m_jobs : std::max(1u, std::thread::hardware_concurrency());
    CheckQueue queue(m_files, ResolveSchemaOption(m_schema), jobs);
    ExitStatus status = ExitStatus::Good;
    std::size_t documents = 0;
    std::size_t errors = 0;
    std::set<std::string> brokenSchemas;
    for (std::size_t number = 0; number < m_files.size(); ++number) {
        const CheckedDocument document = queue.WaitFor(number);
        status = Worse(status, document.status);
        errors += document.errors;
        if (document.wasChecked)
            ++documents;
        // The errors in a schema are printed once, not for each document.
        if (document.brokenSchema.empty() || brokenSchemas.insert(document.brokenSchema).second)
            StandardStreams::WriteError(document.lines);
    }
    const std::size_t unchecked = m_files.size() - documents;
    StandardStreams::Write(FormatCount(documents, "document") + ", " + FormatCount(errors, "error") +
        (unchecked > 0 ? ", " + std::to_string(unchecked) + " not checked" : "") + "\n");
    return status;
}
