// What the process inherits from whoever starts it, made safe for the work ahead.

#pragma once

namespace ProcessSetup {

/**
 * Keeps the console from touching the work: a standard stream that is closed is opened on the null
 * device, lest a file of the device takes its number, and writing into a broken pipe is an error
 * instead of the end. To be called before anything is opened.
 */
void guardStandardStreams();

/**
 * Makes Qt and the commands treat file names as UTF-8, also where a service manager starts the
 * tool in the "C" locale. To be called before the application object is made.
 */
void useUtf8FileNames();

/**
 * Hears of the end of commands also where the caller has blocked the signal that tells it, and
 * would otherwise wait for them without end.
 */
void unblockChildSignal();

/**
 * Forgets the options for zip and unzip that somebody keeps in the environment: they could leave
 * files out of a backup that then counts as made.
 */
void dropArchiverOptions();

} // namespace ProcessSetup
