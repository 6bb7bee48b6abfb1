// Writes what tests gave in the form of the project's other reports; scripts that sum up count the lines in it.
import { writeFileSync } from 'node:fs';

const escaped = (text) => text.replace(/[&<>"]/g, (sign) => ({ '&': '&amp;', '<': '&lt;', '>': '&gt;', '"': '&quot;' })[sign]);

export default async function* report(events) {
    const cases = [];
    for await (const { type, data } of events) {
        const isFile = data?.details?.type === 'suite' || data?.name?.endsWith('.test.mjs');
        if ((type === 'test:pass' || type === 'test:fail') && !isFile) {
            const result = type === 'test:fail' ? 'failed' : data.skip !== undefined ? 'skipped' : 'completed';
            cases.push(`    <testcase name="${escaped(data.name)}" status="run" result="${result}" />`);
        }
    }
    const failures = cases.filter((one) => one.includes('result="failed"')).length;
    if (process.env.BROWSER_REPORT) {
        writeFileSync(process.env.BROWSER_REPORT, `<?xml version="1.0" encoding="UTF-8"?>\n<testsuites tests="${cases.length}" `
            + `failures="${failures}" name="browser">\n  <testsuite name="browser">\n${cases.join('\n')}\n  </testsuite>\n</testsuites>\n`);
    }
    yield '';
}
