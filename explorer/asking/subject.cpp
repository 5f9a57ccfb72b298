#include "subject.h"

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "explorer/tv/lazy_tv.h"

namespace explorer {

namespace {

template <typename Function>
void Bind(Function*& function, void* symbol) {
    function = reinterpret_cast<Function*>(symbol);
}

}  // namespace

void CheckSubject(const std::string& file) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) {
        throw NoSuchFile(file + ": there is no such provider library");
    }
    int ends[2];
    if (pipe(ends) != 0) {
        throw std::runtime_error("cannot make a pipe");
    }
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        // Bound at once: an import that the platform does not serve shows here, with its name.
        std::string problem;
        void* library =
            dlopen(std::filesystem::absolute(file, error).c_str(), RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr) {
            problem = dlerror();
        } else {
            for (const char* name : {"create_provider", "delete_provider", "check_visibility_int",
                                     "check_enable_int"}) {
                if (dlsym(library, name) == nullptr) {
                    problem = file + ": does not export " + name;
                }
            }
        }
        const ssize_t written = write(ends[1], problem.data(), problem.size());
        _exit(written >= 0 && problem.empty() ? 0 : 1);
    }
    close(ends[1]);
    char problem[1024] = "";
    const ssize_t size = read(ends[0], problem, sizeof(problem) - 1);
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0) {
        throw SubjectError("cannot be loaded as a provider: " +
                           (size > 0 ? std::string(problem) : file + " crashes when it is loaded"));
    }
}

Subject::Subject(const std::string& file, const Policy& policy) : file_(file) {
    std::error_code error;
    library_ = dlopen(std::filesystem::absolute(file, error).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library_ == nullptr) {
        throw SubjectError(std::string("cannot be loaded as a provider: ") + dlerror());
    }
    int (*create)(void***) = nullptr;
    Bind(create, Need("create_provider"));
    Bind(delete_, Need("delete_provider"));
    Bind(checkVisible, Need("check_visibility_int"));
    Bind(checkEnabled, Need("check_enable_int"));
    speechLanguages =
        static_cast<std::list<std::string>*>(Symbol("_ZN11CSIMenuUtil17m_listTTSLanguageB5cxx11E"));

    Choices choices;
    tv().Begin(choices);
    tv().SetPolicy(policy.published.empty() ? nullptr : &policy.published.front());
    tv().AppendNumber(Entry::kAnswer, "create_provider", create(&slots_));
    startRecord_.assign(tv().Record());
    if (slots_ == nullptr) {
        throw SubjectError(file + ": create_provider gives no table");
    }
    table_ = reinterpret_cast<const SIProviderTable*>(slots_);
    for (std::size_t i = 1; i < policy.published.size(); ++i) {
        Publish(policy.published[i]);
    }
}

Subject::~Subject() {
    Delete();
    if (library_ != nullptr) {
        dlclose(library_);
    }
}

void Subject::Publish(const std::string& document) {
    Choices choices;
    tv().Begin(choices);
    tv().SetPolicy(&document);
    try {
        if (!tv().NotifyPolicy()) {
            tv().Append(Entry::kWrong, "nobody watches the policy");
        }
    } catch (const std::exception& exception) {
        tv().Append(Entry::kWrong,
                    std::string("an exception leaves the watch callback: ") + exception.what());
    }
    startRecord_.append(tv().Record());
}

std::string Subject::Delete() {
    if (slots_ == nullptr) {
        return "";
    }
    Choices choices;
    tv().Begin(choices);
    tv().AppendNumber(Entry::kAnswer, "delete_provider", delete_(&slots_));
    slots_ = nullptr;
    return std::string(tv().Record());
}

void* Subject::Symbol(const char* mangled) const {
    return dlsym(library_, mangled);
}

void* Subject::Need(const char* name) const {
    void* symbol = dlsym(library_, name);
    if (symbol == nullptr) {
        throw SubjectError(file_ + ": does not export " + name);
    }
    return symbol;
}

}  // namespace explorer
