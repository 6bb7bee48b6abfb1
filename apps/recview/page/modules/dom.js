// Makes elements; every text goes in as text.

/**
 * @param {string} tag @param {object} [properties] of the element; `aria` and `data` are objects of their own
 * @param {...(Node|string|(Node|string)[])} children
 */
export function element(tag, properties = {}, ...children) {
    const made = document.createElement(tag);
    const { aria = {}, data = {}, role, ...rest } = properties;
    Object.assign(made, rest);
    Object.assign(made.dataset, data);
    if (role !== undefined) {
        made.setAttribute('role', role);
    }
    for (const [name, value] of Object.entries(aria)) {
        made.setAttribute(`aria-${name}`, value);
    }
    made.append(...children.flat());
    return made;
}

/** A button. @param {Node|string|(Node|string)[]} content @param {object} [properties] as those of element */
export function button(content, action, properties = {}) {
    const made = element('button', { type: 'button', ...properties }, content);
    made.addEventListener('click', action);
    return made;
}

/** A select with [value, text] choices. */
export function choice(label, choices, chosen, action) {
    const made = element('select', { title: label, aria: { label } });
    fill(made, choices, chosen);
    made.addEventListener('change', () => action(made.value));
    return made;
}

/** A select with its label in words before it. */
export function labelledChoice(text, choices, changed) {
    const select = element('select');
    fill(select, choices, choices[0][0]);
    select.addEventListener('change', changed);
    const label = element('label', {}, `${text} `, select);
    return { label, select, get value() { return select.value; }, set value(value) { select.value = value; } };
}

/** What Escape closes, while it or something in it has the focus. */
export function closedByEscape(menu, summary) {
    menu.addEventListener('keydown', (event) => {
        if (event.key === 'Escape') {
            menu.open = false;
            summary.focus();
            event.stopPropagation();
        }
    });
    return menu;
}

/** Gives a select other choices. */
export function fill(select, choices, chosen) {
    select.replaceChildren(...choices.map(([value, text]) => element('option', { value: String(value), textContent: text })));
    select.value = String(chosen);
}
