// parse-text|write-text FILE: GNUstep's own parser and writer of old-style text. The median of five runs.
#import <Foundation/Foundation.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

static double milliseconds(void) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1e3 + now.tv_nsec * 1e-6;
}

static int compare(const void* a, const void* b) {
    double left = *(const double*)a, right = *(const double*)b;
    return (left > right) - (left < right);
}

static unsigned long nodesIn(id value) {
    unsigned long count = 1;
    if ([value isKindOfClass:[NSArray class]]) {
        for (NSUInteger i = 0; i < [value count]; i++) {
            count += nodesIn([value objectAtIndex:i]);
        }
    } else if ([value isKindOfClass:[NSDictionary class]]) {
        NSEnumerator* keys = [value keyEnumerator];
        id key;
        while ((key = [keys nextObject]) != nil) {
            count += nodesIn([value objectForKey:key]);
        }
    }
    return count;
}

int main(int argc, char** argv) {
    NSAutoreleasePool* pool = [NSAutoreleasePool new];
    if (argc != 3) {
        return 2;
    }
    NSData* data = [NSData dataWithContentsOfFile:[NSString stringWithUTF8String:argv[2]]];
    int writes = strncmp(argv[1], "write", 5) == 0;
    double times[5];
    unsigned long nodes = 0;
    for (int run = 0; run < 5; run++) {
        NSAutoreleasePool* inner = [NSAutoreleasePool new];
        NSPropertyListFormat format;
        double start = milliseconds();
        id value = [NSPropertyListSerialization propertyListWithData:data
                                                             options:NSPropertyListImmutable
                                                              format:&format
                                                               error:NULL];
        times[run] = milliseconds() - start;
        if (value == nil) {
            return 1;
        }
        nodes = nodesIn(value);
        if (writes) {
            start = milliseconds();
            NSData* written =
                [NSPropertyListSerialization dataFromPropertyList:value
                                                           format:NSPropertyListOpenStepFormat
                                                 errorDescription:NULL];
            times[run] = milliseconds() - start;
            if (written == nil) {
                return 1;
            }
            nodes = [written length];
        }
        [inner release];
    }
    qsort(times, 5, sizeof *times, compare);
    printf("RESULT %s %.9g\n", writes ? "write_ms" : "parse_ms", times[2]);
    printf("RESULT nodes %lu\n", nodes);
    [pool release];
    return 0;
}
