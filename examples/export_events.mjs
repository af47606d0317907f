// Takes the music off the attached player or phone: runs the program quaylink, and follows its events.
//
// node export_events.mjs PROGRAM FOLDER
//
// PROGRAM is quaylink, or quaylink.exe on Windows; a main process of Electron runs it in the same way. Ctrl-C cancels:
// the copy under way is finished, and the same command goes on from there.
import { spawn } from 'node:child_process';
import { createInterface } from 'node:readline';

const [program, folder] = process.argv.slice(2);
if (!folder) {
  console.error('usage: node export_events.mjs PROGRAM FOLDER');
  process.exit(2);
}

// Draws over what was shown before.
function showProgress(text = '') {
  process.stderr.write(`\r${text.slice(0, 78).padEnd(78)}\r`);
}

// The end of its input, which this program holds open, cancels the export. The events tell everything that is said on
// its error stream, and on Windows no console window is wanted.
const child = spawn(program, ['export', '--json', folder], { stdio: ['pipe', 'pipe', 'ignore'], windowsHide: true });
child.on('error', (error) => {
  console.error(error.message);
  process.exit(1);
});
const closed = new Promise((resolve) => child.on('close', resolve));
process.on('SIGINT', () => child.stdin.end());

let end = {};
for await (const line of createInterface({ input: child.stdout })) {
  const event = JSON.parse(line);
  if ((event.format ?? 1) !== 1) throw new Error('this quaylink is too new');
  if (event.event === 'progress') {
    const percent = Math.floor((100 * event.bytes) / Math.max(event.total, 1));
    showProgress(`${String(percent).padStart(3)} %  ${event.name}`);
  } else if (event.event === 'track' && event.result === 'failed') {
    showProgress();
    console.log(`${event.name}: ${event.error}`);
  } else if (event.event === 'end') {
    end = event;
  }
}
const status = await closed;
showProgress();
if ('copied' in end) {
  console.log(`${end.copied + end.replaced} copied, ${end.moved + end.skipped} there already, ` +
    `${end.failed} failed, ${end.notReached} not reached`);
} else {
  console.log(end.error ?? `quaylink ended with status ${status}`);
}
process.exitCode = status;
