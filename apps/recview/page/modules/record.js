// A record as a readable table: the one that was clicked, or that play stepped to.
import { button, element } from './dom.js';
import { latest } from './latest.js';
import * as text from './text.js';

const mostRows = 200;
const names = { kind: 'Kind', value: 'Value', lowerLimit: 'Lower limit', upperLimit: 'Upper limit', offset: 'Offset',
    key: 'Key', number: 'Number' };

export function create(container, model, server) {
    const close = () => model.set({ record: null });
    const body = element('div', { className: 'record-body' });
    const heading = element('h2', { tabIndex: -1 }, 'Record');
    container.replaceChildren(element('header', {}, heading, button('Close', close)), body);
    container.hidden = true;
    container.addEventListener('keydown', (event) => {
        if (event.key === 'Escape') {
            event.stopPropagation();
            close();
        }
    });
    const load = latest(async () => {
        const { recording, record: wanted, utc } = model.get();
        if (!wanted || !recording) {
            return;
        }
        const { at, code, hz } = wanted;
        const answer = wanted.answer ?? await server.json('/api/record', { recording: recording.id, at, step: 0, type: code });
        // Another one, or none, may be wanted by now.
        if (model.get().record === wanted) {
            body.replaceChildren(table(answer, hz, utc));
        }
    }, (error) => body.replaceChildren(element('p', { className: 'error' }, error.message)));
    model.on(['record'], () => {
        const wanted = model.get().record;
        container.hidden = !wanted;
        if (wanted) {
            load();
        } else {
            body.replaceChildren();
        }
    });
    model.on(['recording'], close);
}

function row(name, value) {
    return element('tr', {}, element('th', { scope: 'row' }, name), element('td', {}, value));
}

function table({ ms, record }, hz, utc) {
    const rows = [row('Time', `${text.moment(ms, utc)} ${text.zone(ms, utc)}`), row('In the file', record.timeMs === null ? 'lost' : `${record.timeMs} ms`),
        row('Type', `${record.keyword ?? 'type'} (${record.code})`), row('Path', record.path ?? ''),
        row('At byte', String(record.position))];
    const made = element('div', {}, element('table', { className: 'record' }, element('tbody', {}, rows)));
    if (record.value === null) {
        made.append(element('p', {}, 'The data of this record is not understood.'));
    } else if (record.value.cells) {
        made.append(...mapTables(record.value, hz, utc));
    } else {
        const body = Object.entries(record.value).map(([name, value]) => row(names[name] ?? name, plain(value)));
        made.querySelector('tbody').append(...body);
    }
    return made;
}

function plain(value) {
    return value === null ? 'none' : typeof value === 'object' ? JSON.stringify(value) : String(value);
}

/** The measured cells of a map, the one that was meant first; of very many the first ones. */
function mapTables(value, hz, utc) {
    const channels = text.channels(value.range);
    const cells = value.cells.map((cell, index) => ({ cell, hz: channels[index] })).filter(({ cell }) => cell !== null);
    const meant = cells.findIndex((cell) => cell.hz === hz);
    if (meant > 0) {
        cells.unshift(...cells.splice(meant, 1));
    }
    const bearings = value.kind !== 'LevelMap';
    const columns = bearings ? ['Frequency', 'Azimuth', 'Elevation', 'Level', 'Quality'] : ['Frequency', 'Level'];
    const body = cells.slice(0, mostRows).map(({ cell, hz: channel }) => element('tr',
        { className: channel === hz ? 'meant' : '' }, element('td', {}, text.frequency(channel)),
        (bearings ? [[cell.azimuthDeg, '°'], [cell.elevationDeg, '°'], [cell.levelDb, ' dB'], [cell.quality, '']]
            : [[cell, ' dB']]).map(([number, unit]) => element('td', {}, typeof number === 'number' ? `${number}${unit}` : ''))));
    const stamp = value.timeStampUs ? `, measured ${text.moment(value.timeStampUs / 1000, utc)}` : '';
    const parts = [element('p', {}, `${value.kind}: ${cells.length} of ${value.cells.length} channels measured${stamp}.`),
        element('table', { className: 'record' }, element('thead', {}, element('tr', {},
            columns.map((name) => element('th', { scope: 'col' }, name)))), element('tbody', {}, body))];
    if (cells.length > mostRows) {
        parts.push(element('p', {}, `${cells.length - mostRows} more channels are not shown here.`));
    }
    return parts;
}
