/*
 * What a fake provider does to the process that it is loaded into: FAULT_... A guest's misconduct,
 * not a wrong answer.
 */
#pragma once

/* A process of its own, told to the test by $FAKE_PID_FILE. */
static void live_on(void) {
    const char* file = getenv("FAKE_PID_FILE");
    FILE* pid = file != NULL ? fopen(file, "w") : NULL;
    if (pid != NULL) {
        fprintf(pid, "%d", getpid());
        fclose(pid);
    }
    alarm(0);
    for (;;) {
        sleep(1000);
    }
}

/* A thread that runs the library's own code whenever it is unloaded. */
static void* work_on(void* counter) {
    for (volatile unsigned* count = (volatile unsigned*)counter;;) {
        ++*count;
    }
}

static void end_process(void) {
    _exit(0);
}

/* In create_provider(). */
static void misbehave(void) {
#ifdef FAULT_PRINTS
    printf("Hello!\n");
#endif
#ifdef FAULT_TAKES_SIGNAL
    signal(SIGTERM, SIG_IGN);
#endif
#ifdef FAULT_CLEARS_ALARM
    alarm(0);
#endif
#ifdef FAULT_CHANGES_FOLDER
    chdir("/");
#endif
#ifdef FAULT_SETS_ENVIRONMENT
    setenv("FAKE", "was here", 1);
#endif
#ifdef FAULT_SETS_LOCALE
    setlocale(LC_ALL, "C.UTF-8");
#endif
#ifdef FAULT_LEAVES_FILE_OPEN
    open("/dev/null", O_RDONLY);
#endif
#ifdef FAULT_STARTS_THREAD
    pthread_t thread;
    static unsigned count;
    pthread_create(&thread, NULL, work_on, &count);
#endif
#ifdef FAULT_STARTS_PROCESS
    if (fork() == 0) {
        live_on();
    }
#endif
#ifdef FAULT_STARTS_DAEMON
    if (fork() == 0) {
        setsid();
        signal(SIGTERM, SIG_IGN);
        if (fork() == 0) {
            live_on();
        }
        _exit(0);
    }
    usleep(100000);
#endif
#ifdef FAULT_FORKS
    const pid_t child = fork();
    if (child > 0) {  // the host ends what still runs when the check does
        waitpid(child, NULL, 0);
    }
#endif
#ifdef FAULT_EXITS_WHEN_CREATED
    _exit(0);
#endif
#ifdef FAULT_CALLS_EXIT
    exit(0);
#endif
#ifdef FAULT_BECOMES_TRUE
    execl("/bin/true", "true", NULL);
#endif
#ifdef FAULT_HANGS_UNALARMED
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, NULL);
    alarm(0);
    for (;;) {
    }
#endif
#ifdef FAULT_STOPS_ITSELF
    raise(SIGSTOP);
#endif
#ifdef FAULT_ENDS_ITS_GROUP
    kill(0, SIGKILL);
#endif
#ifdef FAULT_CLOSES_ALL
    for (int descriptor = 3; descriptor < 1024; ++descriptor) {
        close(descriptor);
    }
#endif
#ifdef FAULT_SAYS_PASSED
    for (int descriptor = 0; descriptor < 64; ++descriptor) {
        write(descriptor, "passed\n", 7);
        write(descriptor, "0", 2);
    }
    _exit(0);
#endif
#ifdef FAULT_ENDS_AT_EXIT
    atexit(end_process);
#endif
#ifdef FAULT_ENDS_ITS_WATCHER
    kill(getppid(), SIGKILL);
#endif
#ifdef FAULT_LITTERS
    char file[200];
    snprintf(file, sizeof file, "%s/litter/more", getenv("TMPDIR"));
    *strrchr(file, '/') = '\0';
    mkdir(file, 0700);
    strcat(file, "/more");
    close(open(file, O_CREAT | O_WRONLY, 0600));
    abort();
#endif
    (void)live_on;
    (void)work_on;
    (void)end_process;
}

#ifdef FAULT_EXITS_WHEN_LOADED
__attribute__((constructor)) static void at_load(void) {
    _exit(0);
}
#endif

#ifdef FAULT_EXITS_WHEN_UNLOADED
__attribute__((destructor)) static void at_unload(void) {
    _exit(0);
}
#endif

#ifdef FAULT_HANGS_WHEN_LOADED
__attribute__((constructor)) static void at_load(void) {
    sleep(1000);
}
#endif

#ifdef FAULT_EXITS_AT_ITS_END
/* The library stays in the process (see its link options), so that this runs at the very end. */
__attribute__((destructor)) static void at_end(void) {
    _exit(0);
}
#endif
