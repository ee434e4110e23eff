#include "tools/relaymsg/Schema.h"

#include "tools/relaymsg/Job.h"
#include "tools/relaymsg/JsonParse.h"
#include "tools/relaymsg/JsonValues.h"
#include "tools/relaymsg/SchemaJson.h"
#include "tools/relaymsg/TextEscape.h"

namespace relaymsg {

using nlohmann::json;

namespace {

std::vector<SchemaChange> changesSince(const std::string& text) {
    return schemaChanges(parseJson(text), json(schemaJson()));
}

} // namespace

ExitStatus printSchema() {
    return print(schemaJson().dump(2) + '\n');
}

ExitStatus checkSchema(const std::string& path) {
    Job job(path);
    JsonValues values(job.file());
    values.next();
    if (!job.file().error().empty()) {
        job.sayOfInput(job.file().error() + "\n");
        return job.end(ExitStatus::Input);
    }
    std::vector<SchemaChange> changes;
    try {
        changes = changesSince(values.text());
    } catch (const JsonFault& fault) {
        job.sayOfInput((fault.path.empty() ? "it" : fault.path) + " " + fault.sentence + "\n");
        return job.end(ExitStatus::Json);
    } catch (const json::exception& error) {
        job.sayOfInput("is not what `relaymsg schema` prints: " + escaped(error.what()) + ".\n");
        return job.end(ExitStatus::Json);
    }
    ExitStatus status = ExitStatus::Ok;
    for (const SchemaChange& change : changes) {
        job.out().append((change.breaks ? "breaks    " : "harmless  ") + escaped(change.sentence) + '\n');
        status = change.breaks || status == ExitStatus::Breaks ? ExitStatus::Breaks : ExitStatus::Changed;
    }
    return job.end(status);
}

} // namespace relaymsg
