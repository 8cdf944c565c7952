// zortrace show: trace files printed whole or through the filters.
#include "commands.h"

#include <windows.h>

#include "output.h"
#include "trace_files.h"

bool resolve_paths(const std::vector<std::wstring>& operands, std::vector<std::wstring>& files)
{
    bool all = true;
    for (const std::wstring& path : operands) {
        bool folder = is_folder(path);
        if (!folder && GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) {
            files.push_back(path);
            continue;
        }
        std::wstring stem = path;
        if (folder && stem.back() != L'\\' && stem.back() != L'/')
            stem += L'\\';
        std::vector<std::wstring> daily = daily_files(stem, folder);
        if (daily.empty()) {
            write_err(L"zortrace: " + (folder ? L"no trace files (NAMEyyyymmdd.log) in the folder " + path
                                              : path + L": no such file, and no daily files " + path + L"yyyymmdd.log") +
                      L"\n");
            all = false;
        }
        files.insert(files.end(), daily.begin(), daily.end());
    }
    return all;
}

bool read_records(const std::wstring& file, const std::function<void(const Record&)>& take)
{
    TraceFile reader;
    std::wstring error, line;
    if (reader.open(file, 0, error)) {
        // A dump ends with its file: the next file's first lines are its own.
        RecordBuilder builder(take);
        while (reader.next(line, error))
            builder.add(line);
        builder.finish();
    }
    if (!error.empty())
        write_err(L"zortrace: " + (error.find(file) == 0 ? error : file + L": " + error) + L"\n");
    return error.empty();
}

int show(const Options& options)
{
    std::vector<std::wstring> files;
    bool ok = resolve_paths(options.operands, files);
    long printed = 0;
    for (const std::wstring& file : files)
        ok = read_records(file, [&](const Record& record) {
                 if (!options.filter.keeps(record))
                     return;
                 print_record(record);
                 ++printed;
             }) && ok;
    return ok && printed ? 0 : 1;
}
