// Takes music or files off the attached player or phone: runs the program quaylink, and follows its events.
//
// node follow_events.mjs PROGRAM FOLDER              all music
// node follow_events.mjs PROGRAM DEVICE_PATH DEST    a file of the device, or a phone's folder, such as /DCIM/
//
// PROGRAM is quaylink, or quaylink.exe on Windows; a main process of Electron runs it in the same way. Ctrl-C cancels:
// the copy under way is finished, and the same command goes on from there.
import { spawn } from 'node:child_process';
import { createInterface } from 'node:readline';

const [program, ...paths] = process.argv.slice(2);
if (paths.length !== 1 && paths.length !== 2) {
  console.error('usage: node follow_events.mjs PROGRAM FOLDER, or PROGRAM DEVICE_PATH DEST');
  process.exit(2);
}

// Draws over what was shown before.
function showProgress(text = '') {
  process.stderr.write(`\r${text.slice(0, 78).padEnd(78)}\r`);
}

// The end of its input, which this program holds open, cancels the run. The events tell everything that is said on
// its error stream, and on Windows no console window is wanted.
const command = paths.length === 1 ? 'export' : 'pull';
const child = spawn(program, [command, '--json', ...paths], { stdio: ['pipe', 'pipe', 'ignore'], windowsHide: true });
child.on('error', (error) => {
  console.error(error.message);
  process.exit(1);
});
const closed = new Promise((resolve) => child.on('close', resolve));
process.on('SIGINT', () => child.stdin.end());

let start = {};
let end = {};
let told = 0;
for await (const line of createInterface({ input: child.stdout })) {
  const event = JSON.parse(line);
  if ((event.format ?? 1) !== 1) throw new Error('this quaylink is too new');
  if (event.event === 'start') {
    start = event;
  } else if (event.event === 'progress') {
    // A phone tells no sizes of files that are pulled: these are counted.
    const [done, all] = event.total ? [event.bytes, event.total] : [told, start.tracks];
    const percent = Math.floor((100 * done) / all);
    showProgress(`${String(percent).padStart(3)} %  ${event.name}`);
  } else if (event.event === 'track') {
    ++told;
    if (event.result === 'failed') {
      showProgress();
      console.log(`${event.name}: ${event.error}`);
    }
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
